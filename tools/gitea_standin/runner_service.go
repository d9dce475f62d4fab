package main

import (
	"context"
	"errors"
	"net/http"
	"strings"

	pingv1 "code.gitea.io/actions-proto-go/ping/v1"
	"code.gitea.io/actions-proto-go/ping/v1/pingv1connect"
	runnerv1 "code.gitea.io/actions-proto-go/runner/v1"
	"code.gitea.io/actions-proto-go/runner/v1/runnerv1connect"
	"connectrpc.com/connect"
	"google.golang.org/protobuf/types/known/structpb"
)

const (
	uuidHeader  = "x-runner-uuid"
	tokenHeader = "x-runner-token"
	apiPrefix   = "/api/actions"
)

// runnerService answers the calls of runners out of the board.
type runnerService struct {
	board *board
	url   string // how runners reach this server
}

// handler serves all calls below apiPrefix.
func (s *runnerService) handler() http.Handler {
	authenticated := connect.WithInterceptors(connect.UnaryInterceptorFunc(s.authenticated))
	mux := http.NewServeMux()
	mux.Handle(pingv1connect.NewPingServiceHandler(s))
	mux.Handle(runnerv1connect.NewRunnerServiceHandler(s, authenticated))
	return http.StripPrefix(apiPrefix, mux)
}

// authenticated lets only registered runners through, and whoever wants to become one.
func (s *runnerService) authenticated(next connect.UnaryFunc) connect.UnaryFunc {
	return func(ctx context.Context, request connect.AnyRequest) (connect.AnyResponse, error) {
		header := request.Header()
		if !strings.HasSuffix(request.Spec().Procedure, "/Register") &&
			!s.board.authenticate(header.Get(uuidHeader), header.Get(tokenHeader)) {
			return nil, connect.NewError(connect.CodeUnauthenticated, errors.New("unregistered runner"))
		}
		return next(ctx, request)
	}
}

func (s *runnerService) Ping(_ context.Context, request *connect.Request[pingv1.PingRequest],
) (*connect.Response[pingv1.PingResponse], error) {
	return connect.NewResponse(&pingv1.PingResponse{Data: "Hello, " + request.Msg.GetData() + "!"}), nil
}

func (s *runnerService) Register(_ context.Context, request *connect.Request[runnerv1.RegisterRequest],
) (*connect.Response[runnerv1.RegisterResponse], error) {
	added, err := s.board.register(request.Msg)
	if err != nil {
		return nil, connect.NewError(connect.CodeUnauthenticated, err)
	}
	message := added.message()
	message.Token = added.token
	return connect.NewResponse(&runnerv1.RegisterResponse{Runner: message}), nil
}

func (s *runnerService) Declare(_ context.Context, request *connect.Request[runnerv1.DeclareRequest],
) (*connect.Response[runnerv1.DeclareResponse], error) {
	uuid := request.Header().Get(uuidHeader)
	declared := s.board.declare(uuid, request.Msg.GetVersion(), request.Msg.GetLabels())
	return connect.NewResponse(&runnerv1.DeclareResponse{Runner: declared.message()}), nil
}

func (s *runnerService) FetchTask(_ context.Context, request *connect.Request[runnerv1.FetchTaskRequest],
) (*connect.Response[runnerv1.FetchTaskResponse], error) {
	taken, version, found := s.board.take(request.Header().Get(uuidHeader))
	answer := &runnerv1.FetchTaskResponse{TasksVersion: version}
	if found {
		message, err := s.taskMessage(taken)
		if err != nil {
			return nil, err
		}
		answer.Task = message
	}
	return connect.NewResponse(answer), nil
}

func (s *runnerService) UpdateTask(_ context.Context, request *connect.Request[runnerv1.UpdateTaskRequest],
) (*connect.Response[runnerv1.UpdateTaskResponse], error) {
	state := request.Msg.GetState()
	if err := s.board.setResult(state.GetId(), state.GetResult()); err != nil {
		return nil, connect.NewError(connect.CodeNotFound, err)
	}
	// A result in the answer would tell the runner to cancel the job.
	return connect.NewResponse(&runnerv1.UpdateTaskResponse{State: &runnerv1.TaskState{Id: state.GetId()}}), nil
}

func (s *runnerService) UpdateLog(_ context.Context, request *connect.Request[runnerv1.UpdateLogRequest],
) (*connect.Response[runnerv1.UpdateLogResponse], error) {
	log := request.Msg
	held, err := s.board.addLogs(log.GetTaskId(), log.GetIndex(), log.GetRows(), log.GetNoMore())
	if err != nil {
		return nil, connect.NewError(connect.CodeNotFound, err)
	}
	return connect.NewResponse(&runnerv1.UpdateLogResponse{AckIndex: held}), nil
}

// message is what runners are told about themselves; the token is given away only once.
func (r registeredRunner) message() *runnerv1.Runner {
	return &runnerv1.Runner{
		Id: r.ID, Uuid: r.UUID, Name: r.Name, Version: r.Version, Labels: r.Labels,
		Status: runnerv1.RunnerStatus_RUNNER_STATUS_IDLE,
	}
}

// taskMessage describes a job as a push to the repository's main branch.
func (s *runnerService) taskMessage(t task) (*runnerv1.Task, error) {
	owner, _, _ := strings.Cut(t.Repository, "/")
	facts, err := structpb.NewStruct(map[string]any{
		"repository": t.Repository, "repository_owner": owner, "actor": owner,
		"event_name": "push", "event": map[string]any{},
		"ref": "refs/heads/main", "ref_name": "main", "ref_type": "branch",
		"sha":    "0123456789abcdef0123456789abcdef01234567",
		"run_id": t.ID, "run_number": t.ID, "run_attempt": 1, "job": "job",
		"server_url": s.url, "api_url": s.url + "/api/v1", "token": "none",
		"gitea_default_actions_url": s.url, "gitea_runtime_token": "none",
	})
	if err != nil {
		return nil, err
	}
	return &runnerv1.Task{
		Id: t.ID, WorkflowPayload: []byte(t.workflow), Context: facts,
		// Never empty: the runner adds to this map, and an empty one arrives as nil.
		Secrets: map[string]string{"GITEA_TOKEN": "none", "GITHUB_TOKEN": "none"},
	}, nil
}
