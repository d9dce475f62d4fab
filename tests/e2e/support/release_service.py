"""A release service on loopback: the one question that Valdorn asks it, and how often it did."""

import http.server
import json
import threading

PATH = "/api/v1/repos/gitea/runner/releases/latest"


class ReleaseService:
    """Answers with a release once it is told of one, until then that there is none."""

    def __init__(self):
        self._answer = (404, {"message": "The target couldn't be found."})
        self._asked = []
        service = self

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                service._asked.append(self.path)
                status, body = service._answer
                text = json.dumps(body).encode()
                self.send_response(status)
                self.send_header("Content-Type", "application/json")
                self.send_header("Content-Length", str(len(text)))
                self.end_headers()
                self.wfile.write(text)

            def log_message(self, *_):
                pass

        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self._thread = threading.Thread(target=self._server.serve_forever, args=(0.05,))
        self._thread.start()
        self.url = f"http://127.0.0.1:{self._server.server_port}"

    def publish(self, tag):
        self._answer = (200, {"id": 1, "tag_name": tag, "name": tag, "draft": False})

    def asked(self):
        """The paths that it was asked for, in order."""
        return list(self._asked)

    def close(self):
        self._server.shutdown()
        self._thread.join()
        self._server.server_close()
