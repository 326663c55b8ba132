"""What all commands of zeb share: failures as JSON, settings, colours, completion, the manual page, versions."""
import json
import re
import shutil
import subprocess

import world
from world import World, message

BOLD, END = "\x1b[1m", "\x1b[0m"


class JsonErrors(World):
    def failure(self, *arguments, code=1):
        done = self.zeb(*arguments, "--json", code=code)
        self.assertEqual(done.err.count("\n"), 1)
        told = json.loads(done.err)
        self.assertEqual((list(told), told["version"], told["error"]["exitCode"]), (["version", "error"], 1, code))
        return told["error"]

    def test_failures_are_json_with_their_code(self):
        self.create_profile()
        error = self.failure("find", "Nowhere ü日")
        self.assertEqual((error["message"], error["result"], error["name"]), ("there is no folder 'Nowhere ü日'", None, None))
        error = self.failure("inbox", "--profile", "absent")
        self.assertIn("'absent'", error["message"])
        self.assertEqual((error["result"], error["name"]), ("0x80040111", "MAPI_E_LOGON_FAILED"))
        error = self.failure("show", "Inbox", "00" * 54)
        self.assertRegex(error["result"], "^0x8004")
        self.assertTrue(error["name"].startswith("MAPI_E_"), error)

    def test_wrong_usage_is_json_too(self):
        self.assertIn("'zeb find' needs FOLDER", self.failure("find", code=2)["message"])
        self.assertIn("--since", self.failure("find", "Inbox", "--since", "soon", code=2)["message"])

    def test_every_object_has_a_version(self):
        self.create_profile()
        self.load(message("a"))
        for arguments in (["inbox"], ["find", "Inbox"], ["folders"], ["stores"], ["store", "info"], ["profile", "list"], ["provider", "status"],
                          ["show"], ["read", "Inbox", "1"], ["attachments", "Inbox", "1"], ["ab", "list"], ["ab", "list", "Contacts"],
                          ["name"], ["name", "Priority"], ["name", "0x80040111"], ["value", "Priority", "PRIO_URGENT"], ["doctor"],
                          ["info", "Inbox", "--create"]):
            told = json.loads(self.zeb(*arguments, "--json").out)
            self.assertEqual((list(told)[0], told["version"]), ("version", 1), arguments)
        self.assertEqual(json.loads(self.zeb("export", "json", "Inbox").out)["version"], 1)


class Settings(World):
    def setUp(self):
        super().setUp()
        self.create_profile()
        self.zeb("profile", "create", "Ünï 日本", "--store", self.path("second.zeb"))
        self.load(message("in the first"), message("more"))
        self.file = self.folder / "settings 日.toml"

    def settings(self, *lines):
        self.file.write_text("\n".join(lines))
        self.environment["ZEB_CONFIG"] = str(self.file) if not world.WINDOWS else self.path(self.file.name)

    def test_the_profile_comes_from_the_option_the_environment_or_the_settings(self):
        def total(*arguments):
            return self.inbox(*arguments)["total"]
        self.assertEqual(total(), 2)
        self.settings('profile = "Ünï 日本"')
        self.assertEqual(total(), 0)
        self.environment["ZEB_PROFILE"] = "test"
        self.assertEqual(total(), 2)
        self.assertEqual(total("--profile", "Ünï 日本"), 0)
        self.environment["ZEB_CONFIG"] = ""
        self.environment["ZEB_PROFILE"] = "absent"
        self.refused("inbox", saying="there is no profile 'absent'")
        self.zeb("store", "compact", self.path("second.zeb"))  # a file excludes the profile

    def test_settings_of_one_command_and_of_all(self):
        self.settings("# mine", "limit = 1", "utc = true", "[find]", "limit = 2", 'columns = "number,subject"', "[store.info]", "json = true")
        self.assertEqual(len(self.inbox()["messages"]), 1)
        self.assertEqual(len(self.inbox("--limit", "2")["messages"]), 2)
        self.assertEqual(self.zeb("find", "Inbox").out.splitlines()[0], "number  subject")
        self.assertEqual(len(self.found("Inbox")), 2)
        self.assertEqual(len(self.zeb("find", "Inbox", "--ids").out.splitlines()), 2, "--ids excludes --columns")
        self.assertIn("date (UTC)", self.zeb("inbox").out)
        self.assertEqual(json.loads(self.zeb("store", "info").out)["folders"], 9)

    def test_wrong_settings_are_named(self):
        for lines, said in ((["limt = 1"], "no command has an option '--limt'"), (["[finde]", "limit = 1"], "there is no command 'finde'"),
                            (["[store.chek]", "json = true"], "there is no command 'store.chek'"), (["[find]", "colour = 1"], "'find' has no option '--colour'"),
                            (["limit = 0"], "limit: "), (['color = "sometimes"'], "color: "), (["nonsense"], "'--nonsense'")):
            self.settings(*lines)
            self.refused("inbox", code=2, saying=["settings file '", "settings 日.toml'", said])
        self.environment["ZEB_CONFIG"] = self.path("absent.toml")
        self.zeb("inbox")

    def test_versions(self):
        lines = self.zeb("--version").out.splitlines()
        self.assertRegex(lines[0], r"^zeb \d+\.\d+\.\d+$")
        self.assertEqual(lines[1], "library   zebapi " + lines[0][4:])
        self.assertRegex(lines[2], r"^provider  zebstore " + lines[0][4:] + r" \(SQLite 3\.[\d.]+\), .*zebstore\.(dll|so)$")
        self.assertEqual(lines[3], "settings  none")
        self.environment.pop("ZEB_CONFIG")
        self.assertRegex(self.zeb("--version").out.splitlines()[3], r"^settings  .+[/\\]zebapi/zeb\.toml$")


class Colours(World):
    def test_colours_are_used_when_asked_for(self):
        self.create_profile()
        self.load(message("read"), message("unread", "2026-01-01T00:00:00Z", PR_MESSAGE_FLAGS=0, PR_BODY="a\r\n> quoted\r\nb"))
        plain = self.zeb("inbox").out
        self.assertNotIn("\x1b", plain)
        lines = plain.splitlines()
        colored = f"{BOLD}{lines[0]}{END}\n{lines[1]}\n{BOLD}{lines[2]}{END}\n{lines[3]}\n"
        self.assertEqual(self.zeb("inbox", "--color", "always").out, colored)
        self.assertEqual(self.zeb("--color", "always", "inbox").out, colored)
        self.environment["NO_COLOR"] = "1"
        self.assertEqual(self.zeb("inbox", "--color", "always").out, colored)
        self.assertEqual(self.zeb("inbox", "--color", "never").out, plain)
        shown = self.zeb("read", "Inbox", "unread", "--color", "always").out
        self.assertIn(f"{BOLD}Subject:{END} unread\n", shown)
        self.assertIn("\na\n\x1b[36m> quoted\x1b[0m\nb\n", shown)
        self.assertEqual(re.sub("\x1b\\[[0-9]*m", "", shown), self.zeb("read", "Inbox", "unread").out)
        self.assertTrue(self.zeb("inbox", "--profile", "x", "--color", "always", code=1).err.startswith("\x1b[31mzeb:\x1b[0m there is no profile"))
        self.refused("inbox", "--color", "green", code=2, saying="--color")


class Completion(World):
    def setUp(self):
        super().setUp()
        self.create_profile()
        self.load(message("a", folder="Inbox/Été 日本"))

    def complete(self, *words):
        return [line.split("\t")[0] for line in self.zeb("complete", "--", *words).out.splitlines()]

    def test_commands_options_values_folders_and_profiles(self):
        for words, wanted in ((("in",), ["inbox", "info"]), (("store", "c"), ["check", "compact"]), (("find", "Inbox", "--so"), ["--sort"]),
                              (("find", "Inbox", "--sort", "s"), ["sender", "subject", "size"]), (("find", "In"), ["Inbox", "Inbox/Été 日本"]),
                              (("mv", "Inbox", "1", "Inbox/É"), ["Inbox/Été 日本"]), (("inbox", "--profile", "t"), ["test"]),
                              (("inbox", "--profile", "absent", "x"), []), (("find", "--profile", "absent", "In"), []),
                              (("load", "x"), [":files"]), (("inbox", "--limit", ""), []), (("no", "such"), [])):
            self.assertEqual(self.complete(*words), wanted, words)
        self.assertIn("doctor", self.complete(""))
        self.assertNotIn("complete", self.complete("c"))
        self.assertIn("inbox\tLists the messages of the inbox", self.zeb("complete", "--", "inb").out)

    def test_scripts(self):
        for shell, mark in (("bash", "complete -F _zeb_complete zeb"), ("zsh", "compdef _zeb_complete zeb"), ("powershell", "-CommandName zeb")):
            script = self.zeb("completion", shell).out
            self.assertIn(mark, script)
            self.assertNotIn("TOOL", script)
        self.refused("completion", "fish", code=2, saying="fish")

    def test_in_bash(self):
        if world.WINDOWS:
            return
        script = self.folder / "complete.bash"
        script.write_text(self.zeb("completion", "bash").out + f'''
PATH={world.BUILD}/bin:$PATH
COMP_WORDS=(zeb find Inbox/); COMP_CWORD=2; _zeb_complete; printf '<%s>' "${{COMPREPLY[@]}}"
COMP_WORDS=(zeb load {shutil.os.path.basename(str(script))[:4]}); COMP_CWORD=2; cd "{self.folder}"; _zeb_complete; printf '<%s>' "${{COMPREPLY[@]}}"
''')
        done = subprocess.run(["bash", str(script)], env=self.environment, capture_output=True, text=True, check=True)
        self.assertEqual(done.stdout, "<Inbox/Été\\ 日本><complete.bash>")

    def test_zsh_accepts_its_script(self):
        if world.WINDOWS:
            return
        script = self.folder / "_zeb"
        script.write_text(self.zeb("completion", "zsh").out)
        subprocess.run(["zsh", "-n", str(script)], env=self.environment, check=True)
        run = f"compdef() {{ :; }}; compadd() {{ print -r -- \"$names[@]\"; }}; PATH={world.BUILD}/bin:$PATH; source '{script}'; " \
              "words=(zeb find Inbox/); CURRENT=3; _zeb_complete"
        done = subprocess.run(["zsh", "-c", run], env=self.environment, capture_output=True, text=True, check=True)
        self.assertEqual(done.stdout, "Inbox/Été 日本\n")


class Manual(World):
    registered = False

    def test_the_page_names_every_command_and_option(self):
        page = self.zeb("man").out
        for command in ("doctor", "store backup", "find", "ab compare"):
            self.assertIn(f".SS \\fBzeb {command}\\fR", page)
            listed = self.zeb(*command.split(), "--help").out
            for option in re.findall(r"--[a-z][a-z-]+", listed):
                self.assertIn(option.replace("-", "\\-"), page)
        self.assertNotIn("\nzeb complete", page)

    def test_it_is_a_page_without_warnings(self):
        if world.WINDOWS:
            return
        pages = [(self.zeb("man").out, "zeb store backup COPY"), (self.importer("man").out, "zeb-import [PATH] [options]")]
        for page, part in pages:
            done = subprocess.run(["groff", "-man", "-ww", "-Tutf8", "-P-c"], input=page, capture_output=True, text=True, check=True)
            self.assertEqual(done.stderr, "")
            self.assertIn(part, re.sub(".\b", "", done.stdout).replace("FILE", "COPY"))

    def test_the_importer_has_a_page(self):
        page = self.importer("man").out
        for option in ("--skip\\-duplicates", "--since", "--inbox", "--json"):
            self.assertIn(option.replace("--", "\\-\\-"), page)
        for kind in ("pst", "mbox", "eml"):
            self.assertIn(f".SS \\fBzeb\\-import {kind}\\fR", page)
        self.assertIn("zeb\\-import \\- imports mail into the default store of a profile\n", page)
        self.assertIn("zeb-import.toml", page.replace("\\-", "-"))
        self.assertNotIn("PAGER", page)
        self.assertIn("PAGER", self.zeb("man").out)


class StoreFile(World):
    def test_info_names_the_file_and_what_it_holds(self):
        store = self.create_profile("test", "ü store.zeb")
        self.load(message("a", PR_MESSAGE_FLAGS=0), message("b", folder="Inbox/Sub"), {**message("h"), "associated": True})
        told = json.loads(self.zeb("store", "info", "--json").out)
        self.assertEqual(told["file"], self.path(store.name))
        self.assertEqual({name: told[name] for name in ("name", "fileVersion", "writable", "folders", "messages", "unread", "hidden")},
                         {"name": "zebstore", "fileVersion": 6, "writable": True, "folders": 10, "messages": 2, "unread": 1, "hidden": 1})
        self.assertEqual((told["size"], told["size"] % 4096), (store.stat().st_size, 0))
        lines = self.zeb("store", "info").out.splitlines()
        self.assertEqual(lines[0], "store 'zebstore'")
        self.assertEqual(lines[1].split(maxsplit=1), ["file", self.path(store.name)])
        self.assertEqual(lines[-1].split(maxsplit=1), ["messages", "2 (1 unread), and 1 hidden"])

    def test_a_backup_is_a_store(self):
        self.create_profile()
        self.load(message("kept 日"))
        copy = self.path("copy ü.zeb")
        self.assertRegex(self.zeb("store", "backup", copy).out, r"bytes copied to '.*copy ü\.zeb'\n$")
        self.load(message("later"))
        self.refused("store", "backup", copy, saying=["copy ü.zeb", "exists already"])
        self.zeb("profile", "create", "second", "--store", copy)
        self.assertEqual([each["subject"] for each in self.inbox("--profile", "second")["messages"]], ["kept 日"])
        self.zeb("store", "check", "--profile", "second")

    def test_a_store_that_may_not_be_written_is_read(self):
        store = self.create_profile()
        self.load(message("a", PR_MESSAGE_FLAGS=0))
        store.chmod(0o444)
        self.assertEqual(self.subjects(), ["a"])
        self.assertFalse(json.loads(self.zeb("store", "info", "--json").out)["writable"])
        self.zeb("read", "Inbox", "1")
        self.refused("new", "Inbox", saying=["reading only", "MAPI_E_NO_ACCESS"])
        store.chmod(0o644)
        self.zeb("new", "Inbox")
