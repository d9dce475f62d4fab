// Command gitea_standin is a small server that speaks the runner protocol of Gitea Actions, so that
// a real act_runner can register and run real jobs without a Gitea. See README.md.
package main

import (
	"context"
	"flag"
	"fmt"
	"log"
	"os/signal"
	"syscall"
)

func main() {
	port := flag.Int("port", 0, "port on 127.0.0.1; 0 lets the system choose")
	token := flag.String("token", "standin-token", "registration token that is accepted")
	flag.Parse()

	ctx, stop := signal.NotifyContext(context.Background(), syscall.SIGINT, syscall.SIGTERM)
	defer stop()
	if err := run(ctx, *port, *token); err != nil {
		log.Fatal(err)
	}
}

// run serves until the context is done.
func run(ctx context.Context, port int, token string) error {
	door, err := openDoor(port)
	if err != nil {
		return err
	}
	door.serve(newHandler(newBoard(token), door))
	fmt.Println("listening on", door.url())
	<-ctx.Done()
	return door.close()
}
