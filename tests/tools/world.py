"""The environment of one test: its own folder, registry and, on Windows, Wine prefix."""
import json
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
SAMPLES = ROOT / "build/deps/node_modules/pst-extractor/example/testdata"
MAIL = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Clients\\Mail\\Microsoft Outlook"
BUILD = None
WINDOWS = False
PREFIX = None
END = re.compile(r"^live objects (\d+), live buffers (\d+), bad frees (\d+)$", re.M)
# An exception keeps the provider's text, a list of one identifier its block of entries.
KEEPING = re.compile(r"::GetLastError 0x00000000$| IMAPIFolder::(?:Delete|Copy)Messages ", re.M)
# Every path of a test has characters outside the code pages, of one and of two units of UTF-16. Short: pages show sizes.
FOLDER = "zeb \u65e5\u672c\U0001F600-"


def setup(build, worker):
    """Names the tools' build folder and, for tools of Windows, the Wine prefix of the process `worker`."""
    global BUILD, WINDOWS, PREFIX
    BUILD, WINDOWS = build, (build / "bin/zeb.exe").exists()
    PREFIX = ROOT / f"build/wine-tools-{worker}"


def libraries():
    """The files of the library: one DLL, or a shared object under each of its names."""
    return sorted((BUILD / "bin").glob("zebapi*.dll" if WINDOWS else "libzebapi.so*"))


def teardown():
    if WINDOWS:
        subprocess.run(["wineserver", "--kill"], env=dict(os.environ, WINEPREFIX=str(PREFIX), WINEDEBUG="-all"),
                       check=False)


class World(unittest.TestCase):
    """A test with an empty folder, no profile, and the provider registered (unless `registered` is false)."""

    registered = True

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix=FOLDER))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.environment = dict(os.environ, ZEBAPI_REGISTRY=str(self.folder / "registry.reg"),
                                XDG_CONFIG_HOME=str(self.folder), XDG_DATA_HOME=str(self.folder),
                                ZEB_WINEPREFIX=str(PREFIX), LC_ALL="C.UTF-8", TZ="UTC")
        self.environment["ZEB_CONFIG"] = ""
        for name in ("ZEBAPI_LOG", "ZEBAPI_LOG_LEVEL", "ZEBSTORE_TRACE", "ZEBSTORE_FAULT", "ZEB_PROFILE", "NO_COLOR", "TERM"):
            self.environment.pop(name, None)
        if WINDOWS:
            self.delete_profiles()
        if self.registered:
            self.zeb("provider", "install")

    def delete_profiles(self):
        """Deletes what earlier tests left in the prefix; a provider whose file is missing would hide the new one."""
        listed = self.run_tool("zeb", "profile", "list", "--json")
        if listed.returncode != 0:
            self.reg("delete", MAIL, "/f")
            self.zeb("provider", "install")
            listed = self.zeb("profile", "list", "--json")
        for profile in json.loads(listed.stdout)["profiles"]:
            self.zeb("profile", "delete", profile["name"])
        if not self.registered:
            self.reg("delete", MAIL, "/f")

    def registry_add(self, key, value=None, data=None, undo=None):
        """Creates a key (its root's name in full) and, when `value` is given, sets a text in it ("" is its default).

        Where the registry outlives the test, the key `undo` (`key` itself when not given) is deleted after it."""
        if WINDOWS:
            text = [] if value is None else [*(["/v", value] if value else ["/ve"]), "/t", "REG_SZ", "/d", data]
            self.addCleanup(self.reg, "delete", undo or key, "/f")
            self.assertEqual(self.reg("add", key, *text, "/f"), 0)
            return
        file = self.folder / "registry.reg"
        before = self.registry_text() if file.exists() else "Windows Registry Editor Version 5.00\n"
        name = "" if value is None else (f'"{value}"' if value else "@") + f'="{data}"\n'
        file.write_text(f"{before}\n[{key}]\n{name}", encoding="utf-8")

    def registry_text(self):
        """The registry file of Linux, which is UTF-16 where it has more than ASCII."""
        data = (self.folder / "registry.reg").read_bytes()
        text = data.decode("utf-16" if data.startswith(b"\xff\xfe") else "utf-8")
        return text.replace("\r\n", "\n")

    def reg(self, *arguments):
        """Runs Windows' registry command. Returns its exit code."""
        return subprocess.run([str(ROOT / "scripts/wine-run.sh"), "reg", *arguments], env=self.environment, check=False,
                              stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                              timeout=300).returncode

    def path(self, name):
        """A file of the test's folder in the path form of the tool."""
        file = str(self.folder / name)
        return "Z:" + file.replace("/", "\\") if WINDOWS else file

    def run_tool(self, tool, *arguments, traced=True, **more):
        """Runs a tool; the provider's trace must end cleanly, unless `traced` is false."""
        command = [str(BUILD / "bin" / tool), *arguments]
        if WINDOWS:
            command = [str(ROOT / "scripts/wine-run.sh"), str(BUILD / "bin" / (tool + ".exe")), *arguments]
        environment = more.get("env", self.environment)
        if not traced or "ZEBSTORE_TRACE" in environment:
            return self.run_command(command, **more)
        with tempfile.TemporaryDirectory(prefix="zeb-trace-") as folder:
            trace = pathlib.Path(folder) / "trace"
            named = "Z:" + str(trace).replace("/", "\\") if WINDOWS else str(trace)
            done = self.run_command(command, **{**more, "env": dict(environment, ZEBSTORE_TRACE=named)})
            if trace.exists():
                self.check_trace(trace.read_text(encoding="utf-8"), done)
        return done

    def check_trace(self, trace, done):
        """A tool that started the provider ends without live objects, live blocks or double frees, whatever its exit code."""
        ends = [tuple(map(int, end)) for end in END.findall(trace)]
        kept = len(KEEPING.findall(trace))
        started = " MAPIInitialize 0x00000000" in trace
        self.assertTrue(ends or not started, f"{done.args}: the provider was started and not ended")
        for objects, buffers, frees in ends:
            self.assertEqual((objects, frees), (0, 0), done.args)
            self.assertLessEqual(buffers, kept, done.args)

    def run_command(self, command, **more):
        more.setdefault("env", self.environment)
        more.setdefault("stdin", subprocess.DEVNULL)
        # Files, not pipes: Wine's own processes inherit them and would keep a pipe open long after the tool's end.
        with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as err:
            done = subprocess.run(command, stdout=out, stderr=err, timeout=300, **more)
            for stream in (out, err):
                stream.seek(0)
            done.stdout, done.stderr = out.read(), err.read()
        return done

    def check(self, done, code):
        done.out = done.stdout.decode("utf-8")
        done.err = done.stderr.decode("utf-8")
        self.assertEqual(done.returncode, code, f"{done.args}\n{done.out}{done.err}")
        self.assertNotIn("\r", done.out + done.err)
        return done

    def zeb(self, *arguments, code=0, given=None):
        """Runs zeb and expects its exit code; `given` is its standard input."""
        if given is None:
            return self.check(self.run_tool("zeb", *arguments), code)
        with tempfile.TemporaryFile() as stream:
            stream.write(given.encode())
            stream.seek(0)
            return self.check(self.run_tool("zeb", *arguments, stdin=stream), code)

    def importer(self, *arguments, code=0):
        """Runs zeb-import; the paths in its messages have slashes on both targets."""
        done = self.check(self.run_tool("zeb-import", *arguments), code)
        if WINDOWS:
            done.err = done.err.replace("\\", "/")
        return done

    def refused(self, *arguments, saying, code=1, given=None):
        """Runs zeb, expects failure with one error text on standard error that contains `saying`."""
        done = self.one_sentence(self.zeb(*arguments, code=code, given=given), saying)
        self.assertEqual(done.out, "")
        return done

    def one_sentence(self, done, saying):
        lines = done.err.strip().split("\n")
        self.assertEqual(len(lines), 1, done.err)
        for text in [saying] if isinstance(saying, str) else saying:
            self.assertIn(text, lines[0])
        return done

    def call_number(self, call, *arguments, which=-1, code=0):
        """Runs zeb and returns the number of its last call of that name to the provider."""
        self.environment["ZEBSTORE_TRACE"] = self.path("trace")
        self.zeb(*arguments, code=code)
        del self.environment["ZEBSTORE_TRACE"]
        calls = re.findall(rf"^(\d+) {call}\b", (self.folder / "trace").read_text(), re.M)
        self.assertTrue(calls, f"{call} is not among the calls")
        (self.folder / "trace").unlink()
        return int(calls[which])

    def fail_at(self, number, *arguments, saying, result=0x80040115):
        """Runs zeb with a provider whose call of that number fails, and expects one error text about it."""
        self.environment["ZEBSTORE_FAULT"] = f"call:{number}:0x{result:08X}"
        self.refused(*arguments, saying=saying)
        del self.environment["ZEBSTORE_FAULT"]

    def create_profile(self, name="test", store="test.zeb"):
        self.zeb("profile", "create", name, "--store", self.path(store), "--default")
        return self.folder / store

    def load(self, *lines, code=0, name="mail.jsonl"):
        """Writes the lines (objects, or raw text) to a file and loads it."""
        text = [line if isinstance(line, str) else json.dumps(line) for line in lines]
        (self.folder / name).write_text("\n".join(text) + "\n", encoding="utf-8")
        return self.zeb("load", self.path(name), code=code)

    def found(self, *arguments):
        """The output of zeb find as a list of objects."""
        return json.loads(self.zeb("find", *arguments, "--json").out)["messages"]

    def shown(self, *arguments):
        """The properties that zeb show lists: name to value."""
        properties = json.loads(self.zeb("show", *arguments, "--json").out)["properties"]
        return {each["name"]: each["value"] for each in properties}

    def inbox(self, *arguments):
        return json.loads(self.zeb("inbox", "--json", *arguments).out)

    def subjects(self, *arguments):
        return [message["subject"] for message in self.inbox(*arguments)["messages"]]

    def folders(self, *arguments):
        return json.loads(self.zeb("folders", "--json", *arguments).out)["folders"]


def message(subject, date="2026-01-02T03:04:05Z", folder="Inbox", **properties):
    return {"folder": folder, "properties": {"PR_SUBJECT": subject, "PR_CLIENT_SUBMIT_TIME": date, **properties}}
