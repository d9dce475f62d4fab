package main

import (
	"net"
	"net/http"
	"strings"
	"time"
)

// faults is what goes wrong at present, for runners only: the control interface always answers.
type faults struct {
	PingFails        bool  `json:"ping_fails"`        // status 500
	RegisterFails    bool  `json:"register_fails"`    // status 500
	FetchFails       bool  `json:"fetch_fails"`       // status 500
	DelayMillis      int64 `json:"delay_ms"`          // before every answer
	ResetConnections bool  `json:"reset_connections"` // no answer: the connection is reset
}

// breaks tells whether calls of this path are answered with status 500.
func (f faults) breaks(path string) bool {
	return f.PingFails && strings.HasSuffix(path, "/Ping") ||
		f.RegisterFails && strings.HasSuffix(path, "/Register") ||
		f.FetchFails && strings.HasSuffix(path, "/FetchTask")
}

// withFaults plays the board's faults before the calls of runners.
func withFaults(b *board, next http.Handler) http.Handler {
	return http.HandlerFunc(func(w http.ResponseWriter, r *http.Request) {
		now := b.currentFaults()
		select {
		case <-time.After(time.Duration(now.DelayMillis) * time.Millisecond):
		case <-r.Context().Done():
			return
		}
		switch {
		case now.ResetConnections:
			resetConnection(w)
		case now.breaks(r.URL.Path):
			http.Error(w, "the stand-in was told to fail", http.StatusInternalServerError)
		default:
			next.ServeHTTP(w, r)
		}
	})
}

// resetConnection ends the connection with a reset instead of an answer.
func resetConnection(w http.ResponseWriter) {
	connection, _, err := http.NewResponseController(w).Hijack()
	if err != nil {
		panic(http.ErrAbortHandler)
	}
	if tcp, ok := connection.(*net.TCPConn); ok {
		_ = tcp.SetLinger(0) // without it the close would be an orderly one: still no answer
	}
	_ = connection.Close()
}
