package main

import (
	"crypto/rand"
	"encoding/hex"
	"errors"
	"slices"
	"sync"

	runnerv1 "code.gitea.io/actions-proto-go/runner/v1"
)

var (
	errNoSuchToken = errors.New("runner registration token not found")
	errNoSuchTask  = errors.New("task not found")
)

// registeredRunner is a runner that has registered; Online tells that it has declared itself.
type registeredRunner struct {
	ID      int64    `json:"id"`
	UUID    string   `json:"uuid"`
	Name    string   `json:"name"`
	Version string   `json:"version"`
	Labels  []string `json:"labels"`
	Online  bool     `json:"online"`
	token   string
}

// task is one queued job and what a runner has reported about it.
type task struct {
	ID         int64    `json:"id"`
	Name       string   `json:"name"`
	Repository string   `json:"repository"`
	Runner     string   `json:"runner"` // name; empty while queued
	Result     string   `json:"result"` // queued, running, success, failure, cancelled, skipped
	Logs       []string `json:"logs"`
	LogsDone   bool     `json:"logs_done"`
	workflow   string
	onlyFor    string // name of the runner that is to take it, or empty
}

// board is everything the server knows. All methods may be called from any goroutine; what they
// return are copies.
type board struct {
	registrationToken string // constant

	mu      sync.Mutex
	runners []*registeredRunner
	tasks   []*task
	faults  faults
}

func newBoard(registrationToken string) *board { return &board{registrationToken: registrationToken} }

func randomHex(size int) string {
	bytes := make([]byte, size)
	rand.Read(bytes) // documented never to fail
	return hex.EncodeToString(bytes)
}

// register adds a runner; fails with errNoSuchToken.
func (b *board) register(request *runnerv1.RegisterRequest) (registeredRunner, error) {
	if request.GetToken() != b.registrationToken {
		return registeredRunner{}, errNoSuchToken
	}
	b.mu.Lock()
	defer b.mu.Unlock()
	added := &registeredRunner{
		ID: int64(len(b.runners)) + 1, UUID: randomHex(16), token: randomHex(20),
		Name: request.GetName(), Version: request.GetVersion(), Labels: request.GetLabels(),
	}
	b.runners = append(b.runners, added)
	return *added, nil
}

// authenticate tells whether the pair belongs to a registered runner.
func (b *board) authenticate(uuid, token string) bool {
	b.mu.Lock()
	defer b.mu.Unlock()
	found := b.findLocked(uuid)
	return found != nil && found.token == token
}

func (b *board) findLocked(uuid string) *registeredRunner {
	for _, each := range b.runners {
		if each.UUID == uuid {
			return each
		}
	}
	return nil
}

// declare notes what an authenticated runner says about itself.
func (b *board) declare(uuid, version string, labels []string) registeredRunner {
	b.mu.Lock()
	defer b.mu.Unlock()
	found := b.findLocked(uuid)
	found.Version, found.Labels, found.Online = version, labels, true
	return *found
}

// queue adds a job, of which the board fills in what is its own, and returns its number.
func (b *board) queue(added task) int64 {
	b.mu.Lock()
	defer b.mu.Unlock()
	added.ID, added.Result, added.Logs = int64(len(b.tasks))+1, "queued", []string{}
	b.tasks = append(b.tasks, &added)
	return added.ID
}

// take hands the oldest queued job that it may have to an authenticated runner; false when there is
// none. The second result is the number of jobs ever queued.
func (b *board) take(uuid string) (task, int64, bool) {
	b.mu.Lock()
	defer b.mu.Unlock()
	count, name := int64(len(b.tasks)), b.findLocked(uuid).Name
	for _, each := range b.tasks {
		if each.Result == "queued" && (each.onlyFor == "" || each.onlyFor == name) {
			each.Result, each.Runner = "running", name
			return *each, count, true
		}
	}
	return task{}, count, false
}

func (b *board) taskLocked(id int64) (*task, error) {
	if id < 1 || id > int64(len(b.tasks)) {
		return nil, errNoSuchTask
	}
	return b.tasks[id-1], nil
}

// task looks a job up by its number; fails with errNoSuchTask.
func (b *board) task(id int64) (task, error) {
	b.mu.Lock()
	defer b.mu.Unlock()
	found, err := b.taskLocked(id)
	if err != nil {
		return task{}, err
	}
	copied := *found
	copied.Logs = slices.Clone(found.Logs)
	return copied, nil
}

var resultNames = map[runnerv1.Result]string{
	runnerv1.Result_RESULT_SUCCESS:   "success",
	runnerv1.Result_RESULT_FAILURE:   "failure",
	runnerv1.Result_RESULT_CANCELLED: "cancelled",
	runnerv1.Result_RESULT_SKIPPED:   "skipped",
}

// setResult notes the result of a job; an unspecified one means that it still runs.
func (b *board) setResult(id int64, result runnerv1.Result) error {
	b.mu.Lock()
	defer b.mu.Unlock()
	found, err := b.taskLocked(id)
	if err != nil {
		return err
	}
	if name, final := resultNames[result]; final {
		found.Result = name
	}
	return nil
}

// addLogs stores the rows that start at the index, skips those it has, and returns how many it has
// now. Rows behind a gap are not taken: the runner sends them again.
func (b *board) addLogs(id, index int64, rows []*runnerv1.LogRow, last bool) (int64, error) {
	b.mu.Lock()
	defer b.mu.Unlock()
	found, err := b.taskLocked(id)
	if err != nil {
		return 0, err
	}
	for offset, row := range rows {
		if index+int64(offset) == int64(len(found.Logs)) {
			found.Logs = append(found.Logs, row.GetContent())
		}
	}
	held := int64(len(found.Logs))
	found.LogsDone = found.LogsDone || (last && held >= index+int64(len(rows)))
	return held, nil
}

// listRunners returns all runners, oldest first.
func (b *board) listRunners() []registeredRunner {
	b.mu.Lock()
	defer b.mu.Unlock()
	list := make([]registeredRunner, 0, len(b.runners))
	for _, each := range b.runners {
		list = append(list, *each)
	}
	return list
}

// listTasks returns all jobs, oldest first.
func (b *board) listTasks() []task {
	b.mu.Lock()
	defer b.mu.Unlock()
	list := make([]task, 0, len(b.tasks))
	for _, each := range b.tasks {
		copied := *each
		copied.Logs = slices.Clone(each.Logs)
		list = append(list, copied)
	}
	return list
}

func (b *board) setFaults(now faults) {
	b.mu.Lock()
	defer b.mu.Unlock()
	b.faults = now
}

func (b *board) currentFaults() faults {
	b.mu.Lock()
	defer b.mu.Unlock()
	return b.faults
}
