package main

import (
	"encoding/json"
	"net/http"
	"strconv"
	"time"
)

// maxAway bounds how long the server can be away: nobody could call it back.
const maxAway = time.Hour

// control is the plain HTTP interface for tests, below /control/.
type control struct {
	board *board
	door  *door
}

// newHandler serves runners and the control interface.
func newHandler(b *board, d *door) http.Handler {
	service := &runnerService{board: b, url: d.url()}
	c := &control{board: b, door: d}
	mux := http.NewServeMux()
	mux.Handle(apiPrefix+"/", withFaults(b, service.handler()))
	mux.HandleFunc("POST /control/jobs", c.queueJob)
	mux.HandleFunc("GET /control/runners", c.listRunners)
	mux.HandleFunc("GET /control/tasks", c.listTasks)
	mux.HandleFunc("GET /control/tasks/{id}", c.showTask)
	mux.HandleFunc("GET /control/faults", c.showFaults)
	mux.HandleFunc("PUT /control/faults", c.setFaults)
	mux.HandleFunc("POST /control/away", c.goAway)
	return mux
}

func (c *control) queueJob(w http.ResponseWriter, r *http.Request) {
	var job struct {
		Repository string `json:"repository"`
		Workflow   string `json:"workflow"`
		Name       string `json:"name"`
		Runner     string `json:"runner"`
	}
	if !readJSON(w, r, &job) {
		return
	}
	if job.Repository == "" || job.Workflow == "" {
		http.Error(w, "a job needs a repository and a workflow", http.StatusBadRequest)
		return
	}
	id := c.board.queue(task{
		Name: job.Name, Repository: job.Repository, workflow: job.Workflow, onlyFor: job.Runner,
	})
	writeJSON(w, map[string]int64{"id": id})
}

func (c *control) listRunners(w http.ResponseWriter, _ *http.Request) {
	writeJSON(w, c.board.listRunners())
}

func (c *control) listTasks(w http.ResponseWriter, _ *http.Request) {
	writeJSON(w, c.board.listTasks())
}

func (c *control) showTask(w http.ResponseWriter, r *http.Request) {
	id, err := strconv.ParseInt(r.PathValue("id"), 10, 64)
	if err != nil {
		http.Error(w, "a task's id is a number", http.StatusBadRequest)
		return
	}
	found, err := c.board.task(id)
	if err != nil {
		http.Error(w, err.Error(), http.StatusNotFound)
		return
	}
	writeJSON(w, found)
}

func (c *control) showFaults(w http.ResponseWriter, _ *http.Request) {
	writeJSON(w, c.board.currentFaults())
}

// setFaults replaces all faults: those not named are off.
func (c *control) setFaults(w http.ResponseWriter, r *http.Request) {
	var now faults
	if readJSON(w, r, &now) {
		c.board.setFaults(now)
		writeJSON(w, now)
	}
}

// goAway answers first and shuts the door then: the caller's connection is cut like all others.
func (c *control) goAway(w http.ResponseWriter, r *http.Request) {
	var absence struct {
		Seconds float64 `json:"seconds"`
	}
	if !readJSON(w, r, &absence) {
		return
	}
	away := time.Duration(absence.Seconds * float64(time.Second))
	if away <= 0 || away > maxAway {
		http.Error(w, "seconds must be more than 0, at most 3600", http.StatusBadRequest)
		return
	}
	w.Header().Set("Content-Length", "0")
	w.WriteHeader(http.StatusAccepted)
	_ = http.NewResponseController(w).Flush() // the caller may have gone; that changes nothing
	go c.door.shutFor(away)
}

// readJSON reads the request's body; answers with status 400 and returns false when it is no good.
func readJSON(w http.ResponseWriter, r *http.Request, into any) bool {
	decoder := json.NewDecoder(http.MaxBytesReader(w, r.Body, 1<<20))
	decoder.DisallowUnknownFields()
	if err := decoder.Decode(into); err != nil {
		http.Error(w, err.Error(), http.StatusBadRequest)
		return false
	}
	return true
}

func writeJSON(w http.ResponseWriter, value any) {
	w.Header().Set("Content-Type", "application/json")
	_ = json.NewEncoder(w).Encode(value) // the caller may have gone; that changes nothing
}
