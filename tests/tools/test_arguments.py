"""What stands on a command line: dates, sizes, and properties with their values."""
from world import World, message

NAMED = "{00062008-0000-0000-C000-000000000046}:PT_LONG:id:0x8503"


class Dates(World):
    def setUp(self):
        super().setUp()
        self.create_profile()

    def test_a_date_is_written_with_or_without_time_seconds_and_zone(self):
        self.load(message("noon", "2026-01-03T12:00:00Z"), message("later", "2026-01-03T12:00:30Z"),
                  message("midnight", "2026-01-04T00:00:00Z"))
        for moment, wanted in (("2026-01-03", ["midnight", "later", "noon"]), ("2026-01-04", ["midnight"]),
                               ("2026-01-03 12:00", ["midnight", "later", "noon"]),
                               ("2026-01-03T12:00", ["midnight", "later", "noon"]),
                               ("2026-01-03 12:01", ["midnight"]), ("2026-01-03T12:01", ["midnight"]),
                               ("2026-01-03 12:00:30", ["midnight", "later"]),
                               ("2026-01-03T12:00:30", ["midnight", "later"]),
                               ("2026-01-03T12:00:30Z", ["midnight", "later"]),
                               ("2026-01-03T12:00:30.00000000Z", ["midnight", "later"]),
                               ("2026-01-03T12:00:30.0000001Z", ["midnight"])):
            with self.subTest(since=moment):
                self.assertEqual([each["subject"] for each in self.found("Inbox", "--since", moment)], wanted)
        for moment, wanted in (("2026-01-03", ["later", "noon"]), ("2026-01-03T12:00:00Z", ["noon"]),
                               ("2026-01-03T11:59:59.9999999Z", [])):
            with self.subTest(until=moment):
                self.assertEqual([each["subject"] for each in self.found("Inbox", "--until", moment)], wanted)

    def test_dates_that_are_none_are_refused(self):
        for text in ("2026-13-01", "2026-00-01", "2026-01-00", "2026-1-2", "1900-02-29", "2026-04-31", "1600-12-31",
                     "2026-01-02T24:00:00Z", "2026-01-02T00:60:00Z", "2026-01-02T00:00:60Z", "2026-01-02T00:00:00Zx",
                     "2026-01-02T00:00:00.Z", "2026-01-02T00:00:00.00000001Z", "2026-01-02T00", "0x1",
                     "0x000000000000000g"):
            with self.subTest(text=text):
                self.refused("find", "Inbox", "--since", text, code=2, saying=["--since", f"'{text}'"])


class Sizes(World):
    def setUp(self):
        super().setUp()
        self.create_profile()
        self.load(message("large", PR_BODY="x" * 25_000))
        self.size = self.found("Inbox")[0]["size"]

    def count(self, *conditions):
        return len(self.found("Inbox", *conditions))

    def test_a_size_itself_counts_as_so_large_and_as_no_larger(self):
        self.assertEqual([self.count("--size", str(self.size + more)) for more in (-1, 0, 1)], [1, 1, 0])
        self.assertEqual([self.count("--max-size", str(self.size + more)) for more in (-1, 0, 1)], [0, 1, 1])

    def test_units_are_of_1024_in_either_letter_case(self):
        whole = self.size // 1024
        self.assertLess((whole + 1) * 1000, self.size, "the units of 1000 would tell")
        for unit in "kK":
            self.assertEqual([self.count("--size", f"{count}{unit}") for count in (whole, whole + 1)], [1, 0])
            self.assertEqual([self.count("--max-size", f"{count}{unit}") for count in (whole, whole + 1)], [0, 1])
        for size in ("1m", "1M", "1g", "1G", "2047m", "2147483647"):
            self.assertEqual((self.count("--size", size), self.count("--max-size", size)), (0, 1), size)

    def test_sizes_that_are_none_or_too_large_are_refused(self):
        for text in ("k", "1.5k", "10kk", "10 k", "10t", "2147483648", "2g", "2048M", "18014398509481984k"):
            with self.subTest(text=text):
                self.refused("find", "Inbox", "--size", text, code=2, saying=["--size", f"'{text}'"])


class Assignments(World):
    def setUp(self):
        super().setUp()
        self.create_profile()

    def test_numbers_may_be_hexadecimal(self):
        self.zeb("new", "Inbox", "PR_SUBJECT=a", "PR_IMPORTANCE=0x2", "0x68000002=0x7F", "0x68010014=0xFFFFFFFFFFFFFFFF")
        shown = self.shown("Inbox", "a")
        self.assertEqual([shown[name] for name in ("PR_IMPORTANCE", "0x68000002", "0x68010014")], [2, 127, -1])
        self.refused("set", "Inbox", "a", "PR_IMPORTANCE=0x", code=2, saying="PR_IMPORTANCE")
        self.refused("set", "Inbox", "a", "PR_IMPORTANCE=0x10000000000000000", code=2, saying="PR_IMPORTANCE")

    def test_what_is_no_name_before_the_sign_is_a_subject(self):
        for subject in ("a b=c", "=d", "PR-X=e"):
            with self.subTest(subject=subject):
                self.zeb("new", "Inbox", f"PR_SUBJECT={subject}")
                self.zeb("set", "Inbox", subject, f"{NAMED}=7", "PR_COMMENT=found")
                shown = self.shown("Inbox", subject)
                self.assertEqual((shown["PR_COMMENT"], shown[NAMED]), ("found", 7))

    def test_numbers_that_do_not_fit_are_refused(self):
        self.zeb("new", "Inbox", "PR_SUBJECT=a")
        for assignment in ("0x68000002=65536", "0x68000002=-32769", "PR_IMPORTANCE=4294967296", "PR_IMPORTANCE=-2147483649",
                           "0x68010014=9223372036854775808", "0x68020004=1e39", "0x68020004=true", "PR_IMPORTANCE=1.5"):
            with self.subTest(assignment=assignment):
                name = assignment.split("=", maxsplit=1)[0]
                self.refused("set", "Inbox", "a", assignment, code=2, saying=name)
        self.zeb("set", "Inbox", "a", "0x68000002=65535", "PR_IMPORTANCE=4294967295", "0x68010014=-9223372036854775808")
        shown = self.shown("Inbox", "a")
        self.assertEqual([shown[name] for name in ("0x68000002", "PR_IMPORTANCE", "0x68010014")], [-1, -1, -2 ** 63])
