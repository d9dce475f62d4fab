"""Runs the demo runner, named by VALDORN_DEMO_RUNNER, and looks at what a supervisor would see."""

import json
import os
import re
import select
import signal
import subprocess
import tempfile
import time
import unittest

EXECUTABLE = os.environ["VALDORN_DEMO_RUNNER"]
REGISTER = ["register", "--no-interactive", "--instance", "http://127.0.0.1:3000",
            "--token", "secret", "--name", "mini", "--labels", "macos:host,linux"]
TIMEOUT = 30


class DemoRunnerTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        self.write("runner-config.yaml", "log:\n  level: debug\n")

    def write(self, name, text):
        with open(os.path.join(self.folder, name), "w", encoding="utf-8") as file:
            file.write(text)

    def read(self, name):
        with open(os.path.join(self.folder, name), encoding="utf-8") as file:
            return file.read()

    def start(self, *arguments, stderr=subprocess.STDOUT, **environment):
        inherited = {k: v for k, v in os.environ.items() if k != "VALDORN_DEMO_SCRIPT"}
        child = subprocess.Popen([EXECUTABLE, *arguments], cwd=self.folder, stdout=subprocess.PIPE,
                                 stderr=stderr, env={**inherited, **environment},
                                 start_new_session=True)
        self.addCleanup(self.end, child)
        return child

    @staticmethod
    def end(child):
        if child.poll() is None:
            child.kill()
            child.wait()
        for stream in (child.stdout, child.stderr):
            if stream:
                stream.close()

    def run_to_end(self, *arguments, **environment):
        child = self.start(*arguments, **environment)
        output, _ = child.communicate(timeout=TIMEOUT)
        return child.returncode, output

    def register_runner(self):
        self.write(".runner", json.dumps(
            {"name": "mini", "address": "http://127.0.0.1:3000", "labels": ["macos:host"]}))

    def start_daemon(self, *steps, **options):
        self.register_runner()
        self.write("demo_runner.script", "\n".join(steps) + "\n")
        return self.start("daemon", "--config", "runner-config.yaml", **options)

    def play(self, *steps):
        """Plays the steps to their end and returns the exit status and the output."""
        child = self.start_daemon(*steps)
        output, _ = child.communicate(timeout=TIMEOUT)
        return child.returncode, output

    def read_until(self, child, text):
        """Reads single bytes, so that nothing behind the text is taken."""
        output = b""
        while text not in output:
            byte = os.read(child.stdout.fileno(), 1)
            self.assertTrue(byte, output)
            output += byte
        return output

    def play_registration(self, *steps):
        self.write("demo_runner.script", "".join(f"register: {step}\n" for step in steps))
        return self.run_to_end(*REGISTER)


class CommandLineTest(DemoRunnerTest):
    def test_tells_its_version_like_the_real_one(self):
        code, output = self.run_to_end("--version")
        self.assertEqual((0, b"gitea-runner version v1.0.8 (demo)\n"), (code, output))

    def test_help_names_every_step(self):
        code, output = self.run_to_end("--help")
        self.assertEqual(0, code)
        for step in ("start", "declare", "job", "pad", "no-route-to-host", "permission-denied",
                     "connection-refused", "loop", "bad-token", "wait", "hang", "line", "stdout",
                     "flood", "crlf", "split-writes", "grandchild", "ignore-term", "crash", "exit"):
            self.assertIn(step, output.decode())

    def test_refuses_what_the_real_one_refuses(self):
        for arguments, message in (
                (["bogus"], 'Error: unknown command "bogus" for "gitea-runner"\n'),
                (["daemon", "--bogus"], "Error: unknown flag: --bogus\n"),
                (["daemon", "extra"], "Error: accepts at most 0 arg(s), received 1\n"),
                (["daemon", "--config"], "Error: flag needs an argument: --config\n"),
                (["daemon", "--config=gone.yaml"],
                 'Error: invalid configuration: open config file "gone.yaml": '
                 "open gone.yaml: no such file or directory\n")):
            with self.subTest(arguments=arguments):
                code, output = self.run_to_end(*arguments)
                self.assertEqual((1, message), (code, output.decode()))


class ScriptTest(DemoRunnerTest):
    def test_says_what_it_does_not_understand(self):
        for step, message in (
                ("dance", 'unknown step "dance"'),
                ("bad-token", '"bad-token" is no step of the daemon'),
                ("register: declare", '"declare" is no step of register'),
                ("register:", "step is missing"),
                ("wait", "time is missing"),
                ("wait 5", '"5" is no time'),
                ("wait 9999999999999999s", '"9999999999999999s" is no time'),
                ("wait 5s now", '"now" is too much'),
                ("exit 256", '"256" is no exit code from 0 to 255'),
                ("exit one", '"one" is no exit code from 0 to 255'),
                ("crash softly", 'crash is one of abort, segv, kill, not "softly"'),
                ("crlf maybe", 'crlf is on or off, not "maybe"'),
                ("flood 1XB lines", '"1XB" is no size'),
                ("flood 1MB words", 'a flood is one of lines, no-line-end, binary, not "words"'),
                ("job acme/site 3s", "Workflow/job is missing"),
                ("job 3s", "time is missing"),
                ("line \\q", "unknown escape \\q"),
                ("line \\x4", "\\x needs two hexadecimal digits")):
            with self.subTest(step=step):
                code, output = self.play("# a comment", "", step)
                self.assertEqual((2, f"demo_runner: demo_runner.script:3: {message}\n"),
                                 (code, output.decode()))

    def test_the_environment_names_another_script(self):
        self.register_runner()
        self.write("demo_runner.script", "exit 3\n")
        self.write("other.txt", "exit 4\n")
        code, _ = self.run_to_end("daemon", VALDORN_DEMO_SCRIPT="other.txt")
        self.assertEqual(4, code)
        code, output = self.run_to_end("daemon", VALDORN_DEMO_SCRIPT="gone.txt")
        self.assertEqual((2, b"demo_runner: gone.txt: cannot be read\n"), (code, output))

    def test_prints_lines_with_escapes(self):
        code, output = self.play("line  two  blanks\\t\\\\\\x41\\0\\e\\n", "line", "stdout \\xff\\c",
                                 "line x", "exit 0")
        self.assertEqual((0, b" two  blanks\t\\A\0\033\n\n\n\xffx\n"), (code, output))

    def test_line_goes_to_standard_error_and_stdout_does_not(self):
        child = self.start_daemon("line a", "stdout b", "exit 0", stderr=subprocess.PIPE)
        self.assertEqual((b"b\n", b"a\n"), child.communicate(timeout=TIMEOUT))

    def test_ends_lines_with_cr_lf_on_demand(self):
        _, output = self.play("crlf on", "line a", "crlf off", "line b", "exit 0")
        self.assertEqual(b"a\r\nb\n", output)

    def test_splits_writes(self):
        read, write = os.pipe2(os.O_DIRECT)  # a packet pipe keeps writes apart
        self.register_runner()
        self.write("demo_runner.script",
                   "split-writes 1\nline abc\nsplit-writes 3\nline abcd\nsplit-writes 0\nline abcd\nexit 0\n")
        subprocess.run([EXECUTABLE, "daemon"], cwd=self.folder, stderr=write, check=True,
                       timeout=TIMEOUT)
        os.close(write)
        pieces = list(iter(lambda: os.read(read, 100), b""))
        os.close(read)
        self.assertEqual([b"a", b"b", b"c", b"\n", b"abc", b"d\n", b"abcd\n"], pieces)

    def test_exits_with_any_code(self):
        for expected in (0, 3, 255):
            self.assertEqual(expected, self.play(f"exit {expected}")[0])

    def test_dies_by_signals(self):
        for how, number in (("", signal.SIGABRT), ("abort", signal.SIGABRT),
                            ("segv", signal.SIGSEGV), ("kill", signal.SIGKILL)):
            with self.subTest(how=how):
                self.assertEqual((-number, b""), self.play(f"crash {how}"))

    def test_waits(self):
        begin = time.monotonic()
        self.play("wait 200ms", "exit 0")
        self.assertGreaterEqual(time.monotonic() - begin, 0.2)

    def test_hangs_until_told_to_stop(self):
        child = self.start_daemon("line ready", "hang", "line never")
        self.read_until(child, b"ready\n")
        child.terminate()
        output, _ = child.communicate(timeout=TIMEOUT)
        self.assertEqual(0, child.returncode)
        self.assertNotIn(b"never", output)

    def test_ignores_termination_on_demand(self):
        child = self.start_daemon("ignore-term", "line ready", "wait 300ms", "line still here", "exit 5")
        self.read_until(child, b"ready\n")
        child.terminate()
        child.send_signal(signal.SIGINT)
        output, _ = child.communicate(timeout=TIMEOUT)
        self.assertEqual((5, b"still here\n"), (child.returncode, output))

    def test_grandchild_keeps_the_pipe_open(self):
        child = self.start_daemon("grandchild 700ms", "exit 0")
        child.wait(TIMEOUT)
        readable, _, _ = select.select([child.stdout], [], [], 0)
        self.assertEqual([], readable)  # no end of file yet
        self.assertEqual(b"", child.stdout.read())  # it comes with the grandchild's end

    def test_grandchild_can_be_terminated(self):
        child = self.start_daemon("grandchild 10m", "exit 0")
        child.wait(TIMEOUT)
        os.killpg(child.pid, signal.SIGTERM)
        readable, _, _ = select.select([child.stdout], [], [], TIMEOUT)
        self.assertEqual([child.stdout], readable)  # the end of the file

    def test_dies_of_a_pipe_that_nobody_reads(self):
        child = self.start_daemon("flood 100GB lines")
        child.stdout.close()
        child.stdout = None
        self.assertEqual(-signal.SIGPIPE, child.wait(TIMEOUT))


class FloodTest(DemoRunnerTest):
    def test_lines_are_numbered(self):
        _, output = self.play("flood 1MB lines", "exit 0")
        lines = output.split(b"\n")
        self.assertEqual((1000000, 15626), (len(output), len(lines)))
        self.assertRegex(lines[15624], rb"^\[Flood/lines\]   \| line 0{7}15625\.+$")

    def test_a_flood_without_line_ends_has_none(self):
        _, output = self.play("flood 200KB no-line-end", "exit 0")
        self.assertEqual((200000, False), (len(output), b"\n" in output))

    def test_a_binary_flood_has_all_bytes(self):
        _, output = self.play("flood 100KB binary", "exit 0")
        self.assertEqual((100000, 256), (len(output), len(set(output))))

    def test_stops_on_demand(self):
        child = self.start_daemon("flood 1000GB no-line-end")
        os.read(child.stdout.fileno(), 1)
        child.terminate()
        child.communicate(timeout=TIMEOUT)
        self.assertEqual(0, child.returncode)


class DaemonTest(DemoRunnerTest):
    ENTRY = re.compile(r'^time="\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d(Z|[+-]\d\d:\d\d)" '
                       r'level=(debug|info|warning|error) msg="[^\n]*" '
                       r'func="\[\w+\]" file="\[\w+\.go:\d+\]"( error="[^\n]*")?$')

    def test_needs_a_registration(self):
        code, output = self.run_to_end("daemon", "--config", "runner-config.yaml")
        lines = output.decode().splitlines()
        self.assertEqual(1, code)
        self.assertIn('msg="Starting runner daemon"', lines[-3])
        self.assertIn('level=error msg="registration file not found, please register the runner first"',
                      lines[-2])
        self.assertEqual("Error: open .runner: no such file or directory", lines[-1])

    def test_refuses_a_broken_registration(self):
        self.write(".runner", "{")
        code, output = self.run_to_end("daemon")
        self.assertEqual(1, code)
        self.assertIn(b"Error: failed to load registration file: unexpected EOF\n", output)

    def test_starts_and_declares_itself(self):
        _, output = self.play("start", "declare", "exit 0")
        lines = output.decode().splitlines()
        self.assertEqual(4, len(lines))
        for line in lines:
            self.assertRegex(line, self.ENTRY)
        self.assertIn('msg="Starting runner daemon"', lines[2])
        self.assertIn('msg="runner: mini, with version: v1.0.8, with labels: [macos], declare successfully"',
                      lines[3])

    def test_a_label_without_a_schema_means_the_host(self):
        self.write(".runner", json.dumps({"name": "m", "address": "a", "labels": ["macos", "x:host"]}))
        self.write("demo_runner.script", "start\ndeclare\nexit 0\n")
        _, output = self.run_to_end("daemon")
        self.assertIn(b'msg="labels updated to: [macos:host x:host]"', output)
        self.assertIn(b"with labels: [macos x], declare", output)

    def test_entries_stay_on_one_line(self):
        self.write(".runner", json.dumps({"name": 'a"b\\c\nd\te\x01é', "address": "a", "labels": []}))
        self.write("demo_runner.script", "declare\nexit 0\n")
        _, output = self.run_to_end("daemon")
        self.assertIn(r'msg="runner: a\"b\\c\nd\te\x01é, with version', output.decode())

    def test_entries_bear_the_local_time_with_its_zone(self):
        self.register_runner()
        self.write("demo_runner.script", "declare\nexit 0\n")
        for zone, suffix in (("ABC-5:30", "+05:30"), ("ABC3", "-03:00"), ("UTC0", "Z")):
            _, output = self.run_to_end("daemon", TZ=zone)
            self.assertRegex(output.decode(), rf'^time="[-0-9]{{10}}T[:0-9]{{8}}{re.escape(suffix)}" ')

    def test_plays_a_job(self):
        child = self.start_daemon("job acme/site My Flow/push 120ms", "exit 0", stderr=subprocess.PIPE)
        out, err = (text.decode().splitlines() for text in child.communicate(timeout=TIMEOUT))
        for line in err:
            self.assertRegex(line, self.ENTRY)
        self.assertIn('msg="task 1 repo is acme/site http://127.0.0.1:3000 http://127.0.0.1:3000"', err[0])
        running = [i for i, line in enumerate(err) if 'msg="Running job with maxParallel=1 for 1' in line]
        self.assertEqual(1, len(running))
        self.assertIn('level=debug msg="Worker 0 finished (1 tasks executed)"', err[-1])
        self.assertEqual("[My Flow/push] Job succeeded", out[-1])
        self.assertIn("[My Flow/push]   | 12 passed", out)

    def test_a_job_takes_its_time(self):
        begin = time.monotonic()
        self.play("job acme/site Deploy/push 240ms", "exit 0")
        self.assertGreaterEqual(time.monotonic() - begin, 0.24)

    def test_pads_job_names(self):
        _, output = self.play("pad 10", "job acme/site CI/a 12ms", "exit 0")
        self.assertIn(b"\n[CI/a      ] Job succeeded\n", output)
        self.assertIn(b"\n[CI/a      ]   | 12 passed\n", output)

    def test_counts_its_tasks_and_loops_after_the_last_declare(self):
        child = self.start_daemon("declare", "job a/b C/d 0ms", "loop")
        output = self.read_until(child, b"task 3 repo is a/b ")
        self.assertEqual(1, output.count(b"declare successfully"))
        child.terminate()
        child.communicate(timeout=TIMEOUT)
        self.assertEqual(0, child.returncode)

    def test_loops_to_the_beginning_without_a_declare(self):
        child = self.start_daemon("line first", "line second", "loop")
        self.read_until(child, b"first\nsecond\nfirst\nsecond\n")

    def test_network_failures_bear_the_kernel_text(self):
        for step, text in (("no-route-to-host", "no route to host"),
                           ("permission-denied", "permission denied"),
                           ("connection-refused", "connection refused")):
            with self.subTest(step=step):
                _, output = self.play(step, "exit 0")
                line = output.decode().rstrip("\n")
                self.assertRegex(line, self.ENTRY)
                self.assertRegex(line, rf'msg="failed to fetch task".* error="unavailable: .*{text}"$')

    def test_stops_when_asked(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            child = self.start_daemon("line ready")
            self.read_until(child, b"ready\n")
            child.send_signal(number)
            output, _ = child.communicate(timeout=TIMEOUT)
            self.assertEqual(0, child.returncode)
            initiated, cancelled = output.decode().splitlines()
            self.assertIn('level=info msg="runner: mini shutdown initiated, waiting 0s for', initiated)
            self.assertIn('level=warning msg="runner: mini cancelled in progress jobs', cancelled)

    def test_cancels_the_job_when_asked_to_stop(self):
        child = self.start_daemon("job acme/site Deploy/push 10m")
        self.read_until(child, b"::endgroup::\n")
        child.terminate()
        output, _ = child.communicate(timeout=TIMEOUT)
        self.assertEqual(0, child.returncode)
        order = [output.index(text) for text in (
            b"shutdown initiated", b"[Deploy/push] Failure - Main", b"this step has been cancelled",
            b"Worker 0 finished (", b"cancelled in progress jobs")]
        self.assertEqual(sorted(order), order)
        self.assertEqual(1, output.count(b"shutdown initiated"))

    def test_tells_less_at_level_info(self):
        self.write("runner-config.yaml", "other:\n  level: debug\nlog:\n  level: info\n")
        _, output = self.play("start", "declare", "job acme/site Deploy/push 12ms", "exit 0")
        lines = output.decode().splitlines()
        self.assertEqual(5, len(lines), output)
        for line in lines:
            self.assertIn(" level=info ", line)
            self.assertNotIn("func=", line)

    def test_lives_an_ordinary_life_without_a_script(self):
        self.register_runner()
        child = self.start("daemon", "--config", "runner-config.yaml")
        self.read_until(child, b"declare successfully")
        child.terminate()
        child.communicate(timeout=TIMEOUT)
        self.assertEqual(0, child.returncode)


class RegistrationTest(DemoRunnerTest):
    def test_leaves_a_registration_that_the_daemon_takes(self):
        code, output = self.run_to_end(*REGISTER)
        self.assertEqual(0, code)
        self.assertEqual(['level=info msg="Registering runner, arch=amd64, os=linux, version=v1.0.8."',
                          'level=debug msg="Successfully pinged the Gitea instance server"',
                          'level=info msg="Runner registered successfully."'],
                         output.decode().splitlines())
        registration = json.loads(self.read(".runner"))
        self.assertEqual(["WARNING", "id", "uuid", "name", "token", "address", "labels", "ephemeral"],
                         list(registration))
        self.assertEqual(("mini", "http://127.0.0.1:3000", ["macos:host", "linux"]),
                         (registration["name"], registration["address"], registration["labels"]))

    def test_prints_on_standard_error_only(self):
        child = self.start(*REGISTER, stderr=subprocess.PIPE)
        out, err = child.communicate(timeout=TIMEOUT)
        self.assertEqual(b"", out)
        self.assertNotEqual(b"", err)

    def refuse(self, changes, last_line):
        arguments = list(REGISTER)
        for flag, value in changes.items():
            arguments[arguments.index(flag) + 1] = value
        code, output = self.run_to_end(*arguments)
        self.assertEqual((1, last_line), (code, output.decode().splitlines()[-1]))
        self.assertFalse(os.path.exists(os.path.join(self.folder, ".runner")))

    def test_refuses_bad_input(self):
        self.refuse({"--instance": ""}, "Error: instance address is empty")
        self.refuse({"--token": ""}, "Error: token is empty")
        self.refuse({"--labels": "a:b:c"}, "Error: unsupported schema: b")

    def test_refuses_the_bad_token(self):
        self.refuse({"--token": "bad"}, "Error: Failed to register runner: "
                                        "unauthenticated: runner registration token not found")

    def test_refuses_any_token_on_demand(self):
        code, output = self.play_registration("bad-token")
        self.assertEqual(1, code)
        self.assertTrue(output.endswith(b"runner registration token not found\n"))

    def test_tells_that_it_cannot_write(self):
        os.mkdir(os.path.join(self.folder, ".runner"))
        code, output = self.run_to_end(*REGISTER)
        self.assertEqual((1, "Error: Failed to register runner: open .runner: is a directory"),
                         (code, output.decode().splitlines()[-1]))

    def test_misbehaves_on_demand(self):
        self.assertEqual((3, b""), self.play_registration("exit 3"))
        self.assertEqual((-signal.SIGSEGV, b""), self.play_registration("crash segv"))
        self.assertEqual((1, b"\xff\xfe\n"), self.play_registration("line \\xff\\xfe", "exit 1"))

    def test_registers_after_its_steps(self):
        code, output = self.play_registration("flood 300KB lines")
        self.assertEqual(0, code)
        self.assertTrue(output.endswith(b"Runner registered successfully.\"\n"))
        self.assertGreater(len(output), 300000)

    def test_hangs_until_told_to_stop(self):
        self.write("demo_runner.script", "register: line ready\nregister: hang\n")
        child = self.start(*REGISTER)
        self.read_until(child, b"ready\n")
        child.terminate()
        output, _ = child.communicate(timeout=TIMEOUT)
        self.assertEqual((1, b"Error: Failed to register runner: context canceled\n"),
                         (child.returncode, output))


if __name__ == "__main__":
    unittest.main()
