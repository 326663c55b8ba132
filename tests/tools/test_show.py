"""zeb show: every property of an object, as text and as JSON."""
import json

from world import World, message

SET = "{00020329-0000-0000-C000-000000000046}"


class Show(World):
    def setUp(self):
        super().setUp()
        self.create_profile()
        self.load({
            **message("Hello\u001b[2J", PR_IMPORTANCE=2, PR_MESSAGE_FLAGS=1, PR_BODY="line\n" * 20000,
                      **{"0x680E1002": [1, -1], "0x680C0048": "{00062008-0000-0000-C000-000000000046}",
                         f"{SET}:PT_MV_UNICODE:name:Keywords": ["a", "b"], f"{SET}:PT_LONG:id:0x8510": 7}),
            "recipients": [{"properties": {"PR_DISPLAY_NAME": "Ada", "PR_RECIPIENT_TYPE": 1, "PR_ENTRYID": "00112233"}}],
            "attachments": [
                {"properties": {"PR_ATTACH_METHOD": 1, "PR_ATTACH_DATA_BIN": "ab" * 70000}},
                {"properties": {"PR_ATTACH_METHOD": 5}, "message": {"properties": {"PR_SUBJECT": "inside"}}}]})

    def test_a_whole_message_in_columns(self):
        lines = self.zeb("show", "Inbox", "1").out.splitlines()
        self.assertEqual(lines[0], "message 1 ('Hello [2J') of folder 'Inbox'")
        self.assertRegex(lines[-1], r"^\d+ properties$")
        self.assertTrue(all(len(line) <= 120 and "\x1b" not in line for line in lines), max(lines, key=len))
        rows = {line.split()[0]: line for line in reversed(lines) if line.startswith("  ")}
        at = rows["PR_SUBJECT"].index("PT_UNICODE")
        section = [line for line in lines[1:lines.index("recipient 1")] if not line.startswith("  named in ")]
        self.assertEqual([line for line in section if line[at:at + 3] != "PT_"], [])
        self.assertTrue(rows["PR_MESSAGE_FLAGS"].endswith("(MSGFLAG_READ | MSGFLAG_HASATTACH)"), rows["PR_MESSAGE_FLAGS"])
        self.assertTrue(rows["PR_RECIPIENT_TYPE"].endswith("1 (MAPI_TO)"))
        self.assertIn("(100,000 characters) line line", rows["PR_BODY"])
        self.assertTrue(rows["PR_BODY"].endswith("\u2026"))
        self.assertIn("(70,000 bytes) ABAB", rows["PR_ATTACH_DATA_BIN"])
        self.assertTrue(rows["Keywords"].endswith("(2) a, b"))
        self.assertRegex(rows["0x8510"], r"PT_LONG +7$")
        self.assertTrue(rows["PR_CLIENT_SUBMIT_TIME"].endswith("2026-01-02 03:04:05 +00:00"))
        for heading in ("named in " + SET, "recipient 1", "attachment 1", "attachment 2, message"):
            self.assertIn(heading, "\n".join(lines))

    def test_values_of_every_kind_are_shown(self):
        name = "n" * 60
        self.load(message("kinds", folder="Kinds", **{
            "0x68000102": "00", "0x68010102": "", "0x6802001F": "", "0x68030003": -7, "0x68040002": 5,
            "0x6805000B": True, "0x68060040": "9999-12-31T23:59:59Z", "0x68070005": 0.5, f"{SET}:PT_LONG:name:{name}": 1,
            "0x68081003": list(range(2000))}))
        lines = self.zeb("show", "Kinds", "1").out.splitlines()
        self.assertEqual(lines, [line.rstrip() for line in lines])
        rows = {line.split()[0]: line.split(maxsplit=2)[1:] for line in lines[1:] if not line.startswith("  named")}
        self.assertEqual([rows[f"0x680{i}{kind}"] for i, kind in enumerate(
            ("0102", "0102", "001F", "0003", "0002", "000B", "0040", "0005"))],
            [["PT_BINARY", "(1 byte) 00"], ["PT_BINARY", "(0 bytes)"], ["PT_UNICODE"], ["PT_LONG", "-7"],
             ["PT_I2", "5"], ["PT_BOOLEAN", "true"], ["PT_SYSTIME", "9999-12-31 23:59:59 +00:00"], ["PT_DOUBLE", "0.5"]])
        self.assertRegex(rows["0x68081003"][1], r"^\(2,000\) 0, 1, 2, .*\u2026$")
        self.assertIn(["PT_LONG", "1"], [rows["n" * 39 + "\u2026"]])
        section = [line.split()[0] for line in lines[1:lines.index("  named in " + SET)]]
        self.assertEqual(section, sorted(section))
        self.assertEqual(lines[-1], f"{len(lines) - 3} properties")

    def test_all_that_is_shown_is_counted(self):
        lines = self.zeb("show", "Inbox", "1").out.splitlines()
        rows = [line for line in lines[1:-1] if line.startswith("  ") and not line.startswith("  named in ")]
        self.assertEqual(lines[-1], f"{len(rows)} properties")

    def test_headings_name_the_object(self):
        self.assertEqual(self.zeb("show").out.splitlines()[0], "store 'zebstore'")
        self.assertEqual(json.loads(self.zeb("show", "--json").out)["object"], "store 'zebstore'")
        self.assertEqual(json.loads(self.zeb("show", "Inbox", "--json").out)["object"], "folder 'Inbox'")
        self.assertEqual(self.zeb("show", "Inbox").out.splitlines()[0], "folder 'Inbox'")

    def test_what_cannot_be_read_is_named(self):
        number = self.call_number("IMAPIProp::OpenProperty", "show", "Inbox", "1", which=0)
        self.environment["ZEBSTORE_FAULT"] = f"call:{number}:0x80040115"
        done = self.one_sentence(self.zeb("show", "Inbox", "1"), [" cannot be read: ", "MAPI_E_NETWORK_ERROR"])
        self.assertIn("PR_SUBJECT ", done.out)

    def test_hidden_messages_are_shown_when_asked(self):
        self.load({**message("hidden"), "associated": True})
        self.assertEqual(self.shown("Inbox", "1", "--associated")["PR_SUBJECT"], "hidden")

    def test_long_values_are_whole_when_asked(self):
        lines = self.zeb("show", "Inbox", "1", "--full").out.splitlines()
        first = next(i for i, line in enumerate(lines) if line.startswith("  PR_BODY "))
        at = lines[first].index("(100,000 characters) line")
        self.assertTrue(lines[first].endswith("(100,000 characters) line"), lines[first])
        self.assertEqual(lines[first + 1:first + 20_000], [" " * at + "line"] * 19_999)
        self.assertTrue(lines[first + 20_001].startswith("  PR_"), lines[first + 20_001])

    def test_windows_line_breaks_are_line_breaks(self):
        self.load(message("breaks", folder="Breaks", PR_BODY="a\r\nb\rc\n\n\u001bd"))
        lines = self.zeb("show", "Breaks", "1", "--full").out.splitlines()
        first = next(i for i, line in enumerate(lines) if line.startswith("  PR_BODY "))
        at = lines[first].index(" a") + 1
        self.assertEqual([line[at:] for line in lines[first:first + 4]], ["a", "b c", "", " d"])
        self.assertTrue(lines[first + 2] == "" and lines[first + 3].startswith(" " * at))
        self.assertIn("a  b c   d", self.zeb("show", "Breaks", "1").out)

    def test_properties_of_later_headers_have_names(self):
        tags = {"0x003D001F": "PR_SUBJECT_PREFIX", "0x007D001F": "PR_TRANSPORT_MESSAGE_HEADERS", "0x10130102": "PR_HTML",
                "0x1035001F": "PR_INTERNET_MESSAGE_ID", "0x3FDE0003": "PR_INTERNET_CPID"}
        values = {"0x3FDE0003": 65001, "0x10130102": "00"}
        self.load(message("named", folder="Named", **{tag: values.get(tag, "text") for tag in tags})
                  | {"attachments": [{"properties": {"0x370E001F": "text/plain", "PR_ATTACH_METHOD": 1}}],
                     "recipients": [{"properties": {"0x39FE001F": "a@b.c", "PR_DISPLAY_NAME": "A"}}]})
        shown = self.zeb("show", "Named", "1").out
        for name in (*tags.values(), "PR_ATTACH_MIME_TAG", "PR_SMTP_ADDRESS"):
            self.assertRegex(shown, rf"(?m)^  {name} ")
        self.assertNotRegex(shown, r"(?m)^  0x")
        self.zeb("set", "Named", "1", "PR_INTERNET_CPID=28591", "PR_INTERNET_MESSAGE_ID=<a@b>")
        self.assertRegex(self.zeb("show", "Named", "1").out, r"(?m)^  PR_INTERNET_CPID .* 28591$")

    def test_machines_read_names_types_and_values(self):
        found = json.loads(self.zeb("show", "Inbox", "1", "--json").out)
        values = {each["name"]: each for each in found["properties"]}
        self.assertEqual(values["PR_BODY"]["value"], "line\n" * 20000)
        self.assertEqual((values["PR_IMPORTANCE"]["type"], values["PR_IMPORTANCE"]["tag"]), ("PT_LONG", "0x00170003"))
        self.assertEqual(values[f"{SET}:PT_MV_UNICODE:name:Keywords"]["value"], ["a", "b"])
        recipient = {each["name"]: each["value"] for each in found["recipients"][0]["properties"]}
        self.assertEqual((recipient["PR_DISPLAY_NAME"], recipient["PR_ENTRYID"]), ("Ada", "00112233"))
        inside = found["attachments"][1]["message"]["properties"]
        self.assertIn("inside", [each["value"] for each in inside])

    def test_folders_stores_and_identifiers_are_shown(self):
        identifier = self.found("Inbox")[0]["entryId"]
        self.assertEqual(self.shown(identifier)["PR_ENTRYID"], identifier)
        folder = self.shown("Inbox")
        self.assertEqual((folder["PR_DISPLAY_NAME"], folder["PR_CONTENT_COUNT"]), ("Inbox", 1))
        self.assertEqual(self.shown(folder["PR_ENTRYID"].lower()), folder)
        self.assertEqual(self.shown()["PR_ENTRYID"], folder["PR_STORE_ENTRYID"])
        self.assertTrue(self.zeb("show", folder["PR_STORE_ENTRYID"]).out.startswith("MAPI_STORE\n"))

    def test_missing_objects_are_named(self):
        self.refused("show", "Inbox/Nowhere", saying="'Inbox/Nowhere'")
        self.refused("show", "Inbox", "2", saying=["no message 2", "1 message"])
        self.refused("show", "Inbox", "1", "--associated", saying="0 messages")
