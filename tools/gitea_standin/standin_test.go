package main

import (
	"context"
	"encoding/json"
	"errors"
	"net/http"
	"strings"
	"syscall"
	"testing"
	"time"

	pingv1 "code.gitea.io/actions-proto-go/ping/v1"
	"code.gitea.io/actions-proto-go/ping/v1/pingv1connect"
	runnerv1 "code.gitea.io/actions-proto-go/runner/v1"
	"code.gitea.io/actions-proto-go/runner/v1/runnerv1connect"
	"connectrpc.com/connect"
)

const goodToken = "good token"

// client is a runner as the server sees it.
type client struct {
	t      *testing.T
	url    string
	calls  runnerv1connect.RunnerServiceClient
	pings  pingv1connect.PingServiceClient
	runner *runnerv1.Runner // once registered
}

func startStandin(t *testing.T) *client {
	t.Helper()
	door, err := openDoor(0)
	if err != nil {
		t.Fatal(err)
	}
	door.serve(newHandler(newBoard(goodToken), door))
	t.Cleanup(func() { _ = door.close() })
	api := door.url() + apiPrefix
	return &client{
		t: t, url: door.url(),
		calls: runnerv1connect.NewRunnerServiceClient(http.DefaultClient, api),
		pings: pingv1connect.NewPingServiceClient(http.DefaultClient, api),
	}
}

func (c *client) register(token string) error {
	request := &runnerv1.RegisterRequest{Name: "mini", Token: token, Labels: []string{"macos"}}
	answer, err := c.calls.Register(context.Background(), connect.NewRequest(request))
	if err == nil {
		c.runner = answer.Msg.GetRunner()
	}
	return err
}

func signed[T any](c *client, message *T) *connect.Request[T] {
	request := connect.NewRequest(message)
	request.Header().Set(uuidHeader, c.runner.GetUuid())
	request.Header().Set(tokenHeader, c.runner.GetToken())
	return request
}

func (c *client) mustRegister() *client {
	c.t.Helper()
	if err := c.register(goodToken); err != nil {
		c.t.Fatal(err)
	}
	return c
}

func (c *client) fetch() (*runnerv1.Task, error) {
	answer, err := c.calls.FetchTask(context.Background(), signed(c, &runnerv1.FetchTaskRequest{}))
	if err != nil {
		return nil, err
	}
	return answer.Msg.GetTask(), nil
}

func (c *client) log(id, index int64, last bool, rows ...string) int64 {
	c.t.Helper()
	request := &runnerv1.UpdateLogRequest{TaskId: id, Index: index, NoMore: last}
	for _, row := range rows {
		request.Rows = append(request.Rows, &runnerv1.LogRow{Content: row})
	}
	answer, err := c.calls.UpdateLog(context.Background(), signed(c, request))
	if err != nil {
		c.t.Fatal(err)
	}
	return answer.Msg.GetAckIndex()
}

// control calls the control interface and returns the status; a good answer goes into `into`.
func (c *client) control(method, path, body string, into any) int {
	c.t.Helper()
	request, err := http.NewRequest(method, c.url+"/control/"+path, strings.NewReader(body))
	if err != nil {
		c.t.Fatal(err)
	}
	answer, err := http.DefaultClient.Do(request)
	if err != nil {
		c.t.Fatal(err)
	}
	defer answer.Body.Close()
	if into != nil && answer.StatusCode == http.StatusOK {
		if err := json.NewDecoder(answer.Body).Decode(into); err != nil {
			c.t.Fatal(err)
		}
	}
	return answer.StatusCode
}

func (c *client) mustControl(method, path, body string, into any) {
	c.t.Helper()
	if status := c.control(method, path, body, into); status/100 != 2 {
		c.t.Fatalf("%s %s: status %d", method, path, status)
	}
}

func wantCode(t *testing.T, err error, code connect.Code, text string) {
	t.Helper()
	if connect.CodeOf(err) != code || !strings.Contains(err.Error(), text) {
		t.Fatalf("got %v, want %v with %q", err, code, text)
	}
}

func TestPingGreets(t *testing.T) {
	c := startStandin(t)
	answer, err := c.pings.Ping(context.Background(), connect.NewRequest(&pingv1.PingRequest{Data: "mini"}))
	if err != nil || answer.Msg.GetData() != "Hello, mini!" {
		t.Fatal(answer, err)
	}
}

func TestRegistersWithTheRightTokenOnly(t *testing.T) {
	c := startStandin(t)
	wantCode(t, c.register("bad"), connect.CodeUnauthenticated, "runner registration token not found")
	c.mustRegister()
	if c.runner.GetUuid() == "" || c.runner.GetToken() == "" || c.runner.GetId() != 1 {
		t.Fatal(c.runner)
	}
}

func TestStrangersAreTurnedAway(t *testing.T) {
	c := startStandin(t)
	_, err := c.fetch()
	wantCode(t, err, connect.CodeUnauthenticated, "unregistered runner")
	c.mustRegister()
	c.runner.Token = "forged"
	_, err = c.fetch()
	wantCode(t, err, connect.CodeUnauthenticated, "unregistered runner")
}

func TestDeclareEchoesVersionAndLabels(t *testing.T) {
	c := startStandin(t).mustRegister()
	request := &runnerv1.DeclareRequest{Version: "v9", Labels: []string{"a", "b"}}
	answer, err := c.calls.Declare(context.Background(), signed(c, request))
	if err != nil {
		t.Fatal(err)
	}
	runner := answer.Msg.GetRunner()
	if runner.GetName() != "mini" || runner.GetVersion() != "v9" || len(runner.GetLabels()) != 2 {
		t.Fatal(runner)
	}
	if runner.GetToken() != "" {
		t.Fatal("the token is given away again")
	}
	var listed []registeredRunner
	c.mustControl("GET", "runners", "", &listed)
	if len(listed) != 1 || !listed[0].Online || listed[0].Version != "v9" {
		t.Fatal(listed)
	}
}

func TestRunsAQueuedJobFromFetchToResult(t *testing.T) {
	c := startStandin(t).mustRegister()
	if found, err := c.fetch(); found != nil || err != nil {
		t.Fatal(found, err)
	}
	var queued struct{ ID int64 }
	c.mustControl("POST", "jobs", `{"repository":"acme/site","workflow":"jobs:","name":"deploy"}`, &queued)
	fetched, err := c.fetch()
	if err != nil || fetched.GetId() != queued.ID || string(fetched.GetWorkflowPayload()) != "jobs:" {
		t.Fatal(fetched, err)
	}
	if repository := fetched.GetContext().GetFields()["repository"].GetStringValue(); repository != "acme/site" {
		t.Fatal(repository)
	}
	if again, _ := c.fetch(); again != nil {
		t.Fatal("a job is handed out twice")
	}
	c.finish(fetched.GetId())

	var done task
	c.mustControl("GET", "tasks/1", "", &done)
	if done.Result != "failure" || done.Runner != "mini" || done.Name != "deploy" || !done.LogsDone {
		t.Fatal(done)
	}
	if strings.Join(done.Logs, " ") != "one two three" {
		t.Fatal(done.Logs)
	}
}

func TestAJobForOneRunnerIsHandedToNoOther(t *testing.T) {
	c := startStandin(t).mustRegister()
	c.mustControl("POST", "jobs", `{"repository":"acme/site","workflow":"a:","runner":"spare"}`, nil)
	if found, err := c.fetch(); found != nil || err != nil {
		t.Fatal(found, err)
	}
	c.mustControl("POST", "jobs", `{"repository":"acme/site","workflow":"b:","runner":"mini"}`, nil)
	if found, err := c.fetch(); err != nil || string(found.GetWorkflowPayload()) != "b:" {
		t.Fatal(found, err)
	}
}

// finish reports three log rows, some of them twice, one of them too early, and a failure.
func (c *client) finish(id int64) {
	c.t.Helper()
	steps := []struct{ held, want int64 }{
		{c.log(id, 0, false, "one", "two"), 2},
		{c.log(id, 3, true, "four"), 2},
		{c.log(id, 1, true, "two", "three"), 3},
	}
	for _, step := range steps {
		if step.held != step.want {
			c.t.Fatalf("acknowledged %d, want %d", step.held, step.want)
		}
	}
	state := &runnerv1.TaskState{Id: id, Result: runnerv1.Result_RESULT_FAILURE}
	answer, err := c.calls.UpdateTask(context.Background(), signed(c, &runnerv1.UpdateTaskRequest{State: state}))
	if err != nil || answer.Msg.GetState().GetResult() != runnerv1.Result_RESULT_UNSPECIFIED {
		c.t.Fatal(answer, err)
	}
}

func TestUnknownTasksAreErrors(t *testing.T) {
	c := startStandin(t).mustRegister()
	state := &runnerv1.UpdateTaskRequest{State: &runnerv1.TaskState{Id: 7}}
	_, err := c.calls.UpdateTask(context.Background(), signed(c, state))
	wantCode(t, err, connect.CodeNotFound, "task not found")
	_, err = c.calls.UpdateLog(context.Background(), signed(c, &runnerv1.UpdateLogRequest{TaskId: 7}))
	wantCode(t, err, connect.CodeNotFound, "task not found")
	if status := c.control("GET", "tasks/7", "", nil); status != http.StatusNotFound {
		t.Fatal(status)
	}
}

func TestFaultsStrikeUntilTheyAreSwitchedOff(t *testing.T) {
	c := startStandin(t).mustRegister()
	c.mustControl("PUT", "faults", `{"fetch_fails":true,"ping_fails":true,"register_fails":true}`, nil)
	_, err := c.fetch()
	wantCode(t, err, connect.CodeUnknown, "500")
	wantCode(t, c.register(goodToken), connect.CodeUnknown, "500")
	_, err = c.pings.Ping(context.Background(), connect.NewRequest(&pingv1.PingRequest{}))
	wantCode(t, err, connect.CodeUnknown, "500")

	c.mustControl("PUT", "faults", `{}`, nil)
	if _, err := c.fetch(); err != nil {
		t.Fatal(err)
	}
}

func TestConnectionsCanBeReset(t *testing.T) {
	c := startStandin(t).mustRegister()
	c.mustControl("PUT", "faults", `{"reset_connections":true}`, nil)
	if _, err := c.fetch(); !errors.Is(err, syscall.ECONNRESET) {
		t.Fatal(err)
	}
	var now faults
	c.mustControl("GET", "faults", "", &now)
	if !now.ResetConnections {
		t.Fatal(now)
	}
}

func TestAnswersCanBeSlow(t *testing.T) {
	c := startStandin(t).mustRegister()
	c.mustControl("PUT", "faults", `{"delay_ms":60000}`, nil)
	ctx, cancel := context.WithTimeout(context.Background(), 50*time.Millisecond)
	defer cancel()
	_, err := c.calls.FetchTask(ctx, signed(c, &runnerv1.FetchTaskRequest{}))
	wantCode(t, err, connect.CodeDeadlineExceeded, "")
}

func TestServerGoesAwayAndComesBackOnTheSamePort(t *testing.T) {
	c := startStandin(t).mustRegister()
	c.mustControl("POST", "away", `{"seconds":0.3}`, nil)
	refused := false
	for deadline := time.Now().Add(10 * time.Second); time.Now().Before(deadline); {
		_, err := c.fetch()
		refused = refused || errors.Is(err, syscall.ECONNREFUSED)
		if refused && err == nil {
			return // back, and it still knows the runner
		}
	}
	t.Fatal("refused:", refused)
}

func TestBadControlCallsAreRefused(t *testing.T) {
	c := startStandin(t)
	for _, call := range []struct{ method, path, body string }{
		{"POST", "jobs", `{"repository":"acme/site"}`},
		{"POST", "jobs", `{"workflow":"jobs:"}`},
		{"POST", "jobs", `{`},
		{"PUT", "faults", `{"no_such_fault":true}`},
		{"POST", "away", `{"seconds":0}`},
		{"POST", "away", `{"seconds":3601}`},
		{"GET", "tasks/first", ``},
	} {
		if status := c.control(call.method, call.path, call.body, nil); status != http.StatusBadRequest {
			t.Errorf("%v: status %d", call, status)
		}
	}
}
