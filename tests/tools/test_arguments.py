"""Arguments of command lines: dates, sizes, and properties with their values."""
import datetime

from world import World, message

NAMED = "{00062008-0000-0000-C000-000000000046}:PT_LONG:id:0x8503"


class Dates(World):
    def setUp(self):
        super().setUp()
        self.create_profile()

    def test_a_date_in_each_form(self):
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


class Zones(World):
    """Dates are shown and read in the user's zone."""

    def setUp(self):
        super().setUp()
        self.create_profile()

    def at(self, zone, *arguments):
        self.environment["TZ"] = zone
        return self.zeb(*arguments).out

    def since(self, zone, *arguments):
        self.environment["TZ"] = zone
        return [each["subject"] for each in self.found("Inbox", "--sort", "subject", *arguments)]

    def test_local_time_is_shown_and_named(self):
        self.load(message("winter", "2026-01-02T03:04:05Z"), message("summer", "2026-07-02T03:04:05Z"))
        for zone, winter, summer, offsets in (
                ("JST-9", "2026-01-02 12:04:05", "2026-07-02 12:04:05", ("+09:00", "+09:00")),
                ("EST5EDT,M3.2.0,M11.1.0", "2026-01-01 22:04:05", "2026-07-01 23:04:05", ("-05:00", "-04:00")),
                ("IST-5:30", "2026-01-02 08:34:05", "2026-07-02 08:34:05", ("+05:30", "+05:30")),
                ("UTC", "2026-01-02 03:04:05", "2026-07-02 03:04:05", ("+00:00", "+00:00"))):
            with self.subTest(zone=zone):
                lines = self.at(zone, "inbox").splitlines()
                self.assertEqual([line[:19].rstrip() for line in lines[:3]], ["date (local)", summer, winter])
                lines = self.at(zone, "find", "Inbox").splitlines()
                self.assertEqual([line[9:28].rstrip() for line in lines[:3]], ["date (local)", summer, winter])
                for subject, shown, offset in (("winter", winter, offsets[0]), ("summer", summer, offsets[1])):
                    self.assertRegex(self.at(zone, "show", "Inbox", subject), rf"PR_CLIENT_SUBMIT_TIME .* {shown} \{offset}\n")

    def test_utc_is_shown_when_asked(self):
        self.load(message("a", "2026-01-02T03:04:05Z"))
        zone = "JST-9"
        self.assertEqual(self.at(zone, "inbox", "--utc").splitlines()[0][:19].rstrip(), "date (UTC)")
        self.assertIn("2026-01-02 03:04:05", self.at(zone, "inbox", "--utc"))
        self.assertIn("2026-01-02 03:04:05", self.at(zone, "find", "Inbox", "--utc"))
        self.assertIn("2026-01-02 03:04:05 UTC\n", self.at(zone, "show", "Inbox", "a", "--utc"))
        self.assertRegex(self.at(zone, "info", "Inbox", "--create"), r"created  \S+ \S+ \+09:00\n")
        self.assertRegex(self.at(zone, "info", "Inbox", "--utc"), r"created  \S+ \S+ UTC\n")
        self.assertEqual(self.inbox()["messages"][0]["date"], "2026-01-02T03:04:05Z")

    def test_dates_without_a_zone_are_local(self):
        self.load(message("a", "2026-01-01T14:59:59Z"), message("b", "2026-01-01T15:00:00Z"), message("c", "2026-01-02T15:00:00Z"))
        zone = "JST-9"
        for moment, wanted in (("2026-01-02", "bc"), ("2026-01-02 00:00", "bc"), ("2026-01-02T00:00:01", "c"),
                               ("2026-01-01T15:00Z", "bc"), ("2026-01-01T15:00:00Z", "bc"), ("2026-01-01T16:00+01:00", "bc"),
                               ("2026-01-01T10:00:00-05", "bc"), ("2026-01-01T20:30:00.5+0530", "c")):
            with self.subTest(since=moment):
                self.assertEqual("".join(self.since(zone, "--since", moment)), wanted)
        self.assertEqual(self.since(zone, "--until", "2026-01-01"), ["a"])
        self.assertEqual(self.since(zone, "--until", "2026-01-02"), ["a", "b"])
        self.assertEqual(self.since(zone, "--until", "2026-01-01", "--utc"), ["a", "b"])
        self.assertEqual(self.since(zone, "--since", "2026-01-02 00:00", "--utc"), ["c"])
        self.zeb("set", "Inbox", "a", "PR_START_DATE=2026-01-02")
        self.assertEqual(self.shown("Inbox", "a")["PR_START_DATE"], "2026-01-01T15:00:00Z")
        for text in ("2026-01-02T00:00+24:00", "2026-01-02T00:00+1", "2026-01-02T00:00+01:60", "2026-01-02+01:00", "7x", "d",
                     "2026-01-02T00:00Z+01:00", "123456d", "1601-01-01T00:00:00+01:00"):
            with self.subTest(text=text):
                self.refused("find", "Inbox", "--since", text, code=2, saying=["--since", f"'{text}'"])

    def test_days_and_hours_before_now(self):
        now = datetime.datetime.now(datetime.timezone.utc).replace(tzinfo=None)
        ages = {"a": 1 / 24, "b": 30 / 24, "c": 6.9, "d": 7.1, "e": 15}
        self.load(*[message(name, (now - datetime.timedelta(days=age)).strftime("%Y-%m-%dT%H:%M:%SZ"))
                    for name, age in ages.items()])
        for moment, wanted in (("2h", "a"), ("7d", "abc"), ("1w", "abc"), ("2w", "abcd"), ("0d", "")):
            with self.subTest(since=moment):
                self.assertEqual("".join(self.since("UTC", "--since", moment)), wanted)
        self.assertEqual(self.since("UTC", "--until", "7d"), ["d", "e"])

    def test_today_and_yesterday_in_the_zone(self):
        now = datetime.datetime.now(datetime.timezone.utc)
        local = now.astimezone(datetime.timezone(datetime.timedelta(hours=9)))
        midnight = local.replace(hour=0, minute=0, second=0, microsecond=0).astimezone(datetime.timezone.utc)
        at = lambda **after: (midnight + datetime.timedelta(**after)).strftime("%Y-%m-%dT%H:%M:%SZ")
        self.load(message("a", at(days=-1, seconds=-1)), message("b", at(days=-1)), message("c", at(seconds=-1)),
                  message("d", at()))
        self.assertEqual(self.since("JST-9", "--since", "yesterday"), ["b", "c", "d"])
        self.assertEqual(self.since("JST-9", "--since", "yesterday", "--until", "yesterday"), ["b", "c"])
        self.assertEqual(self.since("JST-9", "--since", "today"), ["d"])


class Sizes(World):
    def setUp(self):
        super().setUp()
        self.create_profile()
        self.load(message("large", PR_BODY="x" * 25_000))
        self.size = self.found("Inbox")[0]["size"]

    def count(self, *conditions):
        return len(self.found("Inbox", *conditions))

    def test_both_limits_include_the_size(self):
        self.assertEqual([self.count("--size", str(self.size + more)) for more in (-1, 0, 1)], [1, 1, 0])
        self.assertEqual([self.count("--max-size", str(self.size + more)) for more in (-1, 0, 1)], [0, 1, 1])

    def test_units_of_1024_in_either_case(self):
        whole = self.size // 1024
        self.assertLess((whole + 1) * 1000, self.size, "the units of 1000 would tell")
        for unit in "kK":
            self.assertEqual([self.count("--size", f"{count}{unit}") for count in (whole, whole + 1)], [1, 0])
            self.assertEqual([self.count("--max-size", f"{count}{unit}") for count in (whole, whole + 1)], [0, 1])
        for size in ("1m", "1M", "1g", "1G", "2047m", "2147483647"):
            self.assertEqual((self.count("--size", size), self.count("--max-size", size)), (0, 1), size)

    def test_bad_or_large_sizes_are_refused(self):
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

    def test_without_a_name_is_a_subject(self):
        for subject in ("a b=c", "=d", "PR-X=e"):
            with self.subTest(subject=subject):
                self.zeb("new", "Inbox", f"PR_SUBJECT={subject}")
                self.zeb("set", "Inbox", subject, f"{NAMED}=7", "PR_COMMENT=found")
                shown = self.shown("Inbox", subject)
                self.assertEqual((shown["PR_COMMENT"], shown[NAMED]), ("found", 7))

    def test_numbers_out_of_range_are_refused(self):
        self.zeb("new", "Inbox", "PR_SUBJECT=a")
        for assignment in ("0x68000002=65536", "0x68000002=-32769", "PR_IMPORTANCE=4294967296", "PR_IMPORTANCE=-2147483649",
                           "0x68010014=9223372036854775808", "0x68020004=1e39", "0x68020004=true", "PR_IMPORTANCE=1.5"):
            with self.subTest(assignment=assignment):
                name = assignment.split("=", maxsplit=1)[0]
                self.refused("set", "Inbox", "a", assignment, code=2, saying=name)
        self.zeb("set", "Inbox", "a", "0x68000002=65535", "PR_IMPORTANCE=4294967295", "0x68010014=-9223372036854775808")
        shown = self.shown("Inbox", "a")
        self.assertEqual([shown[name] for name in ("0x68000002", "PR_IMPORTANCE", "0x68010014")], [-1, -1, -2 ** 63])
