package main

import (
	"fmt"
	"net"
	"net/http"
	"sync"
	"time"
)

// door is the listening socket. It can be shut for a while, so that the server is as good as gone
// (connections are cut, new ones refused), and opens again on the same port.
type door struct {
	address string // constant

	mu       sync.Mutex
	handler  http.Handler
	server   *http.Server // nil while shut
	listener net.Listener // opened, not yet served
	closed   bool
}

// openDoor listens on 127.0.0.1. Connections wait until serve is called.
func openDoor(port int) (*door, error) {
	listener, err := net.Listen("tcp", fmt.Sprintf("127.0.0.1:%d", port))
	if err != nil {
		return nil, err
	}
	return &door{address: listener.Addr().String(), listener: listener}, nil
}

func (d *door) url() string { return "http://" + d.address }

// serve starts to answer and returns at once.
func (d *door) serve(handler http.Handler) {
	d.mu.Lock()
	defer d.mu.Unlock()
	d.handler = handler
	d.startLocked()
}

func (d *door) startLocked() {
	d.server = &http.Server{Handler: d.handler, ReadHeaderTimeout: 10 * time.Second}
	go func(server *http.Server, listener net.Listener) {
		// Serve always ends with ErrServerClosed here: only close and shutFor end it.
		_ = server.Serve(listener)
	}(d.server, d.listener)
}

// shutFor shuts the door and opens it again after the time. Does nothing while it is shut.
func (d *door) shutFor(away time.Duration) {
	d.mu.Lock()
	defer d.mu.Unlock()
	if d.server == nil || d.closed {
		return
	}
	_ = d.server.Close() // the listener closes in any case; there is nobody to tell
	d.server = nil
	time.AfterFunc(away, d.reopen)
}

// reopen takes the port back; when somebody else has it, tries again until it is free.
func (d *door) reopen() {
	d.mu.Lock()
	defer d.mu.Unlock()
	if d.closed {
		return
	}
	listener, err := net.Listen("tcp", d.address)
	if err != nil {
		time.AfterFunc(100*time.Millisecond, d.reopen)
		return
	}
	d.listener = listener
	d.startLocked()
}

// close ends the service for good.
func (d *door) close() error {
	d.mu.Lock()
	defer d.mu.Unlock()
	d.closed = true
	if d.server == nil {
		return nil
	}
	return d.server.Close()
}
