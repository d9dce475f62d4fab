module valdorn/tools/gitea_standin

go 1.26.0

require (
	code.gitea.io/actions-proto-go v0.4.1
	connectrpc.com/connect v1.20.0
	google.golang.org/protobuf v1.36.11
)
