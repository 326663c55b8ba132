"""zeb load: the format, and lines that are wrong."""
import datetime
import json
import random

from world import World, message


class Load(World):
    def setUp(self):
        super().setUp()
        self.create_profile()

    def test_standard_input_is_loaded(self):
        lines = "\n".join(json.dumps(each) for each in (message("ü日"), message("b")))
        self.assertEqual(self.zeb("load", "-", given=lines).out, "2 messages loaded\n")
        self.assertEqual(sorted(self.subjects()), ["b", "ü日"])
        self.refused("load", "-", given=lines + "\n{", saying=["standard input:3: ", "the 2 lines before it are loaded"])

    def test_says_how_many_were_loaded(self):
        self.assertEqual(self.load(message("a"), "", message("b")).out, "2 messages loaded\n")
        self.assertEqual(self.load(message("c")).out, "1 message loaded\n")

    def test_byte_order_mark_and_windows_lines(self):
        self.load("\ufeff" + '{"folder": "Inbox", "properties": {"PR_SUBJECT": "a"}}\r')
        self.assertEqual(self.subjects(), ["a"])

    def test_creates_folders_with_slashes_in_names(self):
        self.load(message("a", folder="Projects/One\\/Two"), message("b", folder="Projects/One\\/Two"),
                  message("c", folder="/Beside"))
        projects = next(folder for folder in self.folders() if folder["name"] == "Projects")
        self.assertEqual([(sub["name"], sub["messages"]) for sub in projects["folders"]], [("One/Two", 2)])
        self.assertIn("Beside", [folder["name"] for folder in self.folders("--all")])

    def test_folders_are_named_in_any_language(self):
        self.load(message("a", folder="Gr\u00fc\u00dfe \u0416/\u4f60\u597d \U0001F600"))
        folder = next(folder for folder in self.folders() if folder["name"] == "Gr\u00fc\u00dfe \u0416")
        self.assertEqual([(sub["name"], sub["messages"]) for sub in folder["folders"]], [("\u4f60\u597d \U0001F600", 1)])

    def test_blank_lines_of_windows_are_blank(self):
        self.assertEqual(self.load("\r", message("a"), " \t\r").out, "1 message loaded\n")
        self.assertEqual(self.load("\ufeff", message("a")).out, "1 message loaded\n", "a mark is not text")

    def test_messages_nest_at_most_32_deep(self):
        def nested(depth):
            inner = {"properties": {"PR_SUBJECT": str(depth)}}
            if depth < self.depth:
                inner["attachments"] = [{"properties": {"PR_ATTACH_METHOD": 5}, "message": nested(depth + 1)}]
            return inner

        self.depth = 32
        self.load({"folder": "Inbox", **nested(0)})
        self.depth = 33
        self.one_sentence(self.load({"folder": "Inbox", **nested(0)}, code=1), ["mail.jsonl:1: ", "more than 32 deep"])
        self.assertEqual(self.subjects(), ["0"])

    def test_hexadecimal_digits_in_either_case(self):
        self.load(message("a", **{"0x68000102": "aAfF09", "0x68010003": "0x0000aBcD", "0x680A001E": "x",
                                  "{00062008-0000-0000-c000-00000000004a}:PT_TSTRING:id:0xABcd": "y"}))
        shown = self.shown("Inbox", "a")
        self.assertEqual([shown[name] for name in ("0x68000102", "0x68010003", "0x680A001F",
                                                   "{00062008-0000-0000-C000-00000000004A}:PT_UNICODE:id:0xABCD")],
                         ["AAFF09", 0xABCD, "x", "y"])

    def test_properties_of_every_type_are_taken(self):
        self.load({"folder": "Inbox", "properties": {
            "PR_SUBJECT": "all", "PR_COMMENT_A": "narrow", "PR_COMMENT_W": "wide", "0x68000002": -3, "0x68010003": 4294967295,
            "0x68020004": 1.5, "0x68030005": "0x7FF8000000000000", "0x68040006": 12345, "0x68050007": 40000.25,
            "0x6806000A": "0x8004010F", "0x6807000B": True, "0x68080014": -9223372036854775808, "0x6809001E": "text",
            "0x680A001F": {"hex": "00D84100"}, "0x680B0040": "1601-01-01T00:00:00Z", "0x680C0048":
            "{00062008-0000-0000-C000-000000000046}", "0x680D0102": "00ff", "0x680E1002": [1, -1], "0x680F1003": [],
            "0x6810101E": ["a", ""], "0x6811101F": ["\u00e4"], "0x68121102": ["", "00"], "0x68131040":
            ["2026-01-01T00:00:00.5Z"], "0x68141014": [1], "0x68151048": ["{00062008-0000-0000-C000-000000000046}"],
            "{00062008-0000-0000-C000-000000000046}:PT_BOOLEAN:id:0x8503": False,
            "{00020329-0000-0000-C000-000000000046}:PT_MV_UNICODE:name:Key:words": ["x"]}})
        self.assertEqual(self.subjects(), ["all"])

    def test_dates_come_back_as_they_were(self):
        generator = random.Random(4)
        dates = ["1601-01-01T00:00:00Z", "1601-01-01T00:00:00.0000001Z", "9999-12-31T23:59:59.9999999Z",
                 "2000-02-29T12:00:00Z", "1900-02-28T23:59:59Z", "2100-03-01T00:00:00.5Z", "0xFFFFFFFF00000001",
                 "2400-02-29T00:00:00Z", "1999-12-31T23:59:59.123Z"]
        first = datetime.datetime(1601, 1, 1)
        for _ in range(300):
            moment = first + datetime.timedelta(seconds=generator.randrange(265_000_000_000))
            dates.append(moment.strftime("%Y-%m-%dT%H:%M:%SZ").rjust(20, "0"))
        self.load(*[message(f"{i:04}", date) for i, date in enumerate(dates)])
        found = [entry["date"] for entry in self.inbox("--sort", "subject")["messages"]]
        self.assertEqual(found, dates)

    def test_dates_sort_as_dates(self):
        generator = random.Random(5)
        first = datetime.datetime(1970, 1, 1)
        moments = [first + datetime.timedelta(seconds=generator.randrange(2_000_000_000)) for _ in range(100)]
        self.load(*[message(moment.isoformat(), moment.isoformat() + "Z") for moment in moments])
        self.assertEqual(self.subjects(), [moment.isoformat() for moment in sorted(moments, reverse=True)])

    def test_recipients_attachments_and_embedded_messages(self):
        line = message("with parts")
        line["recipients"] = [{"properties": {"PR_DISPLAY_NAME": "Ada", "PR_RECIPIENT_TYPE": 1,
                                              "PR_EMAIL_ADDRESS": "ada@example.org", "PR_ADDRTYPE": "SMTP"}}]
        line["attachments"] = [
            {"properties": {"PR_ATTACH_METHOD": 1, "PR_ATTACH_LONG_FILENAME": "a.bin", "PR_ATTACH_DATA_BIN": "00" * 70000}},
            {"properties": {"PR_ATTACH_METHOD": 5}, "message": {"properties": {"PR_SUBJECT": "inside"},
             "attachments": [{"properties": {"PR_ATTACH_METHOD": 1, "PR_ATTACH_DATA_BIN": "ff"}}]}}]
        self.load(line)
        found = self.inbox()["messages"][0]
        self.assertEqual(found["subject"], "with parts")
        self.assertGreater(found["size"], 70000)
        self.assertIn("is intact", self.zeb("store", "check").out)

    def test_large_text_and_bytes_go_through(self):
        self.load(message("large", PR_BODY="\u00e4" * 300_000, PR_RTF_COMPRESSED="ab" * 200_000))
        self.assertGreater(self.inbox()["messages"][0]["size"], 500_000)

    def test_associated_messages_are_not_listed(self):
        self.load({**message("hidden"), "associated": True}, message("shown"))
        self.assertEqual(self.subjects(), ["shown"])

    def test_a_missing_file_is_named(self):
        self.refused("load", self.path("absent.jsonl"), saying="absent.jsonl' does not exist")
        self.refused("load", self.path("."), saying="is a folder")

    def test_folder_lines_are_counted_separately(self):
        folder = {"folder": "Sub", "folderProperties": {"PR_COMMENT": "of the folder"}}
        self.assertEqual(self.load(folder).out, "1 folder loaded\n")
        self.assertEqual(self.load(message("a"), folder, folder).out, "1 message loaded\n2 folders loaded\n")
        self.assertEqual(self.load("").out, "0 messages loaded\n")
        (self.folder / "empty.jsonl").write_bytes(b"")
        self.assertEqual(self.zeb("load", self.path("empty.jsonl")).out, "0 messages loaded\n")


class BadLines(World):
    def setUp(self):
        super().setUp()
        self.create_profile()
        self.probes = 0
        self.before = {folder["name"]: folder["messages"] for folder in self.folders()}

    def tearDown(self):
        self.zeb("store", "check")

    def stops(self, line, saying):
        """A good line, the bad one, another good one: only the first is loaded. Each call uses a folder of its own."""
        self.probes += 1
        probe = f"Probe {self.probes}"
        done = self.load(message("before", folder=probe), line, message("after", folder=probe), code=1, name="bad.jsonl")
        self.assertEqual(done.out, "")
        self.one_sentence(done, ["bad.jsonl:2: ", "; the line before it is loaded; --from-line 2 continues",
                                 *([saying] if isinstance(saying, str) else saying)])
        after = {folder["name"]: folder["messages"] for folder in self.folders()}
        self.assertEqual(after.pop(probe), 1)
        self.assertEqual(after, self.before)
        self.before = {**after, probe: 1}

    def with_property(self, name, value):
        return {"folder": "New folder", "properties": {"PR_SUBJECT": "bad", name: value}}

    def test_bytes_that_are_no_utf_8(self):
        good = json.dumps(message("before"))
        for bad, column in ((b"\xff", 1), (b'{"folder": "Gr\xfc\xdfe"}', 15), (b'{"a": "\xe6\x97"}', 8)):
            with self.subTest(bad=bad):
                (self.folder / "bytes.jsonl").write_bytes(good.encode() + b"\n" + bad + b"\n")
                self.refused("load", self.path("bytes.jsonl"),
                             saying=f"bytes.jsonl:2: invalid UTF-8 at column {column}; the line before it is")

    def test_loading_goes_on_where_it_stopped(self):
        lines = [message("a"), message("b"), "", "wrong", message("c"), "wrong too", message("d")]
        self.one_sentence(self.load(*lines, code=1),
                          "mail.jsonl:4: invalid JSON: unexpected text at column 1; the 3 lines before it are loaded; --from-line 4")
        self.assertEqual(sorted(self.subjects()), ["a", "b"])
        file = self.path("mail.jsonl")
        done = self.zeb("load", file, "--from-line", "4", code=1)
        self.assertEqual(done.err, f"zeb: {file}:4: invalid JSON: unexpected text at column 1\n")
        self.refused("load", file, "--from-line", "5", saying=":6: invalid JSON: unexpected text at column 1; line 5 is loaded; --from")
        self.assertEqual(self.zeb("load", file, "--from-line", "7").out, "1 message loaded\n")
        self.assertEqual(sorted(self.subjects()), ["a", "b", "c", "d"])
        self.refused("load", file, "--from-line", "8", saying=":8: --from-line: the file has fewer lines")
        self.refused("load", file, "--from-line", "0", code=2, saying="--from-line")

    def test_not_json(self):
        self.stops('{"folder": "New folder", ', "JSON")

    def test_json_that_is_no_object(self):
        self.stops("[1, 2]", "object")

    def test_an_unknown_property(self):
        self.stops(self.with_property("PR_NO_SUCH_THING", 1), "PR_NO_SUCH_THING")

    def test_a_value_of_the_wrong_type(self):
        self.stops(self.with_property("PR_IMPORTANCE", "high"), ["PR_IMPORTANCE", "integer"])

    def test_a_number_out_of_range(self):
        self.stops(self.with_property("PR_IMPORTANCE", 2 ** 32), "PR_IMPORTANCE")

    def test_a_date_that_does_not_exist(self):
        self.stops(self.with_property("PR_START_DATE", "2026-02-29T00:00:00Z"), "PR_START_DATE")

    def test_odd_hexadecimal_text(self):
        self.stops(self.with_property("PR_SENDER_SEARCH_KEY", "abc"), "PR_SENDER_SEARCH_KEY")

    def test_a_single_value_where_many_belong(self):
        self.stops(self.with_property("0x68001003", 1), "array")

    def test_a_type_without_values(self):
        self.stops(self.with_property("0x6800000D", 1), "0x000D")

    def test_an_identifier_of_a_name(self):
        self.stops(self.with_property("0x8001001F", "x"), "0x8001001F")

    def test_a_named_property_that_is_none(self):
        self.stops(self.with_property("{nonsense}:PT_LONG:id:0x8503", 1), "named property")

    def test_no_folder(self):
        self.stops({"properties": {"PR_SUBJECT": "a"}}, '"folder" is missing')

    def test_an_empty_name_in_the_path(self):
        self.stops(message("a", folder="Inbox//Sub"), "empty name")

    def test_an_unknown_key(self):
        self.stops({**message("a"), "colour": "red"}, "colour")

    def test_a_wrong_value_deep_inside(self):
        line = message("a", folder="New folder")
        line["attachments"] = [{"properties": {"PR_ATTACH_METHOD": 5},
                                "message": {"properties": {"PR_SUBJECT": 1}}}]
        self.stops(line, "PR_SUBJECT")

    def test_the_column_of_bad_json(self):
        self.stops('{"folder": x}', "invalid JSON: unexpected text at column 12")

    def test_a_number_beyond_the_range(self):
        self.stops('{"folder": "Inbox", "properties": {"0x68010005": 1e999}}',
                   "invalid JSON: a number is beyond the range of a double")

    def test_parts_of_the_wrong_kind(self):
        good = {"properties": {}}
        for more, saying in (({"recipients": {}}, '"recipients" must be an array'), ({"recipients": ["Ada"]}, "a recipient"),
                             ({"recipients": [{**good, "colour": 1}]}, ['"colour"', "a recipient"]),
                             ({"recipients": [{}]}, ["a recipient", '"properties"']), ({"attachments": [1]}, "an attachment"),
                             ({"attachments": [{**good, "colour": 1}]}, ['"colour"', "an attachment"]),
                             ({"attachments": [{**good, "message": []}]}, '"message" must be an object'),
                             ({"attachments": [{**good, "message": {**good, "folder": "x"}}]}, ['"folder"', "embedded"]),
                             ({"associated": 1}, '"associated" must be true or false'), ({"properties": []}, '"properties"')):
            with self.subTest(more=more):
                self.stops({**message("bad", folder="New folder"), **more}, saying)

    def test_values_and_names_nearly_right(self):
        guid = "{00062008-0000-0000-C000-000000000046}"
        for name, value, saying in (("0x68000002", 65536, "16 bits"), ("0x68000002", -32769, "16 bits"),
                                    ("0x68000014", 2 ** 63, "64 bits"), ("0x68000004", 1e39, "32 bits"),
                                    ("0x6800001F", {"hex": "00"}, "two bytes per character"),
                                    ("0x6800001F", {"hex": "0041", "more": 1}, "text"), ("0x6800001F", "a\u0000b", "zero"),
                                    ("PR_IMPORTANCE_A", 1, "PR_IMPORTANCE_A"), ("0x0000001F", "x", "0x0000001F"),
                                    (f"{guid}:PT_LONG:name:", 1, "name"), (f"{guid}:PT_LONG:id:0x123456789", 1, "identifier"),
                                    (f"{guid}:PT_NONE:id:0x1", 1, '"PT_NONE"'), ("PR_ENTRYID", "00", "refuses PR_ENTRYID"),
                                    ("0x6800001F", ["x" * 100], "x" * 55 + "...")):
            with self.subTest(name=name, value=value):
                self.stops(self.with_property(name, value), saying)
