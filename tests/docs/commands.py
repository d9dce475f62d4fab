"""Which test runs which command of the documents. A command that is not here fails
documents_test.py; so does one that is here and stands in no document any more."""

from typing import NamedTuple

from version import VERSION


class RunBy(NamedTuple):
    """A file that runs the command, and how it calls it."""
    file: str
    call: str


class RunHere(NamedTuple):
    """The name of the test in documents_test.py that runs it."""
    test: str


_LOGIN = RunHere("test_the_switches")
_STANDIN = RunBy("tests/e2e/support/gitea.py", '[SERVER, "--port", str(port), "--token", TOKEN]')

COMMANDS = {
    "./dev run": RunBy("tests/e2e/demo_run_test.py", '[DEV, "run"]'),
    "./dev test": RunBy(".ci/run", "./dev test"),
    "./dev check": RunBy(".ci/run", "./dev check"),
    "./dev bench": RunBy("tests/docs/dev_test.py", '"bench"'),
    "./dev bench --short": RunBy("tests/docs/dev_test.py", '"bench", "--short"'),
    "./dev soak": RunBy("tests/docs/dev_test.py", '"soak"'),
    "./dev soak simulation": RunBy("tests/docs/dev_test.py", '"soak", "simulation"'),
    "./dev soak program": RunBy("tests/docs/dev_test.py", '"soak", "program"'),
    "./dev faults": RunBy("tests/docs/dev_test.py", '"faults"'),
    "./dev demo": RunBy("tests/docs/dev_test.py", '"demo"'),
    "./dev fuzz": RunBy("tests/docs/dev_test.py", '"fuzz"'),
    "./dev coverage": RunBy("tests/docs/dev_test.py", '"coverage"'),
    "./dev format": RunBy("tests/docs/dev_test.py", '"format"'),
    "./dev package": RunBy("tests/docs/dev_test.py", '"package"'),
    f"sudo apt install ./build/package/valdorn_{VERSION}_amd64.deb":
        RunBy("tests/package/install_test.py", 'apt_get("install", '),
    "sudo apt remove valdorn":
        RunBy("tests/package/install_test.py", '"remove"'),
    "valdorn --login-status": _LOGIN,
    "valdorn --enable-login": _LOGIN,
    "valdorn --disable-login": _LOGIN,
    "install -D ~/Downloads/act_runner ~/actrunner/act_runner":
        RunHere("test_the_runner_comes_to_its_place"),
    'rm -rf ~/"Library/Application Support/Valdorn" ~/.config/valdorn ~/.local/state/valdorn '
    "~/actrunner": RunHere("test_nothing_is_left"),
    "rm -rf ~/.cache/act ~/.cache/actcache": RunHere("test_nothing_is_left"),
    'rmdir ~/Library/"Application Support" ~/Library': RunHere("test_nothing_is_left"),
    f'git tag --annotate v{VERSION} --message "Valdorn {VERSION}"': RunHere("test_the_tag"),
    "demo_runner register --no-interactive --instance URL --token T --name N --labels L":
        RunBy("tests/e2e/demo_runner_test.py", '"register"'),
    "demo_runner daemon --config FILE": RunBy("tests/e2e/demo_runner_test.py", '"daemon"'),
    "demo_runner --help": RunBy("tests/e2e/demo_runner_test.py", '"--help"'),
    "act_runner register":
        RunBy("tests/core/runner/RunnerManagerTest.cpp", '"register", "--no-interactive"'),
    "build_runner.sh OUTPUT":
        RunBy("tests/e2e/support/real_runner.py", '"build_runner.sh"), REAL_RUNNER'),
    "go run . --port 3000 --token standin-token": _STANDIN,
    "go test ./...": RunBy("tests/e2e/standin_test.py", '"go", "test", "./..."'),
}
