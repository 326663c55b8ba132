"""zeb name, value and eid: MAPI's constants and entry identifiers."""
import json

from world import World

TABLES = {"MAPIErrors": 98, "CMCErrors": 39, "PropTags": 338, "PropIDs": 338, "PropType": 30}
ONE_OFF = ("00000000812B1FA4BEA310199D6E00DD010F54020000018041006400610000005300" "4D0054005000000061006400610040006500780061006D0070006C0065002E006F00720067000000")


class Names(World):
    registered = False

    def test_values_and_names_find_each_other(self):
        self.assertEqual(self.zeb("name", "proptags", "0x0037001E").out, "PR_SUBJECT\n")
        self.assertEqual(self.zeb("name", "MAPIErrors", "--", "-2147221233").out, "MAPI_E_NOT_FOUND\n")
        self.assertEqual(self.zeb("value", "PropIDs", "PR_SUBJECT").out, "0x00000037\n")

    def test_tables_and_their_rows_are_listed(self):
        tables = {each["table"]: each["rows"] for each in json.loads(self.zeb("name", "--json").out)["tables"]}
        self.assertEqual(len(tables), 22)
        self.assertEqual({name: tables[name] for name in TABLES}, TABLES)
        self.assertTrue(all(tables.values()), tables)
        rows = json.loads(self.zeb("name", "Priority", "--json").out)["rows"]
        self.assertEqual(rows, [{"name": "PRIO_URGENT", "value": 1}, {"name": "PRIO_NORMAL", "value": 0},
                                {"name": "PRIO_NONURGENT", "value": 0xFFFFFFFF}])
        self.assertEqual(self.zeb("name", "Priority").out.splitlines()[0], "0x00000001  PRIO_URGENT")

    def test_numbers_are_written_in_every_way(self):
        self.assertEqual(self.zeb("name", "PropTags", "0X0037001e").out, "PR_SUBJECT\n")
        self.assertEqual(self.zeb("name", "PropTags", str(0x0037001E)).out, "PR_SUBJECT\n")
        self.assertEqual(self.zeb("name", "Priority", "4294967295").out, "PRIO_NONURGENT\n")
        self.refused("name", "Priority", "--", "-2147483648", saying="0x80000000")
        self.assertEqual(json.loads(self.zeb("name", "Priority", "1", "--json").out), {"version": 1, "name": "PRIO_URGENT", "value": 1})
        self.assertEqual(json.loads(self.zeb("value", "Priority", "PRIO_URGENT", "--json").out),
                         {"version": 1, "name": "PRIO_URGENT", "value": 1})
        self.assertEqual(self.zeb("name").out.splitlines()[:2], ["MAPIErrors        98", "CMCErrors         39"])

    def test_a_value_searches_all_tables(self):
        self.assertEqual(self.zeb("name", "0x80040115").out, f"{'MAPIErrors':<16}  MAPI_E_NETWORK_ERROR\n")
        self.assertEqual(self.zeb("name", "0x0037001F").out.splitlines(),
                         [f"{table:<16}  {name}" for table, name in
                          (("PropTags", "PR_SUBJECT_W"), ("PropIDs", "PR_SUBJECT"), ("PropType", "PT_UNICODE"))])
        found = json.loads(self.zeb("name", "1", "--json").out)["names"]
        self.assertIn({"table": "Priority", "name": "PRIO_URGENT"}, found)
        self.assertIn({"table": "RecipType", "name": "MAPI_TO"}, found)
        self.assertIn("PR_INTERNET_CPID", self.zeb("name", "0x3FDE0003").out)
        self.refused("name", "0x80041234", saying="no table has a name for 0x80041234")
        self.refused("name", "12345678901", code=2, saying="32-bit")

    def test_an_unknown_table_is_refused(self):
        self.refused("name", "Colours", "1", code=2, saying=["'Colours'", "MAPIErrors", "AttachMethod"])
        self.refused("value", "Colours", "RED", code=2, saying=["'Colours'", "MAPIErrors", "AttachMethod"])

    def test_unknown_values_and_names_are_named(self):
        self.refused("name", "Priority", "7", saying=["Priority", "0x00000007"])
        self.refused("value", "Priority", "prio_urgent", saying=["Priority", "prio_urgent"])

    def test_only_32_bit_numbers_are_taken(self):
        for text in ("many", "0x", "4294967296", "0x100000000", "-2147483649", "1.5"):
            with self.subTest(text=text):
                arguments = ["name", "PropTags", "--", text] if text.startswith("-") else ["name", "PropTags", text]
                self.refused(*arguments, code=2, saying=[f"'{text}'", "32-bit"])


class EntryIdentifiers(World):
    def test_an_identifier_needs_no_profile(self):
        shown = self.zeb("eid", ONE_OFF).out.splitlines()
        self.assertEqual(shown[0], "CEntryIDInfo")
        self.assertIn("  Type: eidtOneOff", shown)
        self.assertIn("ada@example.org", "\n".join(shown))
        self.assertEqual(self.zeb("eid", "-", given="\n " + ONE_OFF.lower() + "\r\n").out.splitlines()[2:], shown[2:])

    def test_odd_empty_and_foreign_text(self):
        self.refused("eid", "", code=2, saying="empty")
        self.refused("eid", "-", given=" \n", code=2, saying="empty")
        self.refused("eid", ONE_OFF[:-1], code=2, saying=[f"{len(ONE_OFF) - 1} digits", "two"])
        self.refused("eid", "00 11", code=2, saying="'00 11'")
        self.refused("eid", "no identifier", code=2, saying="'no identifier'")

    def test_a_megabyte_is_read_whole(self):
        done = self.zeb("eid", "-", given="00" * 500_000)
        self.assertIn("eidtUnknown", done.out)
        self.assertIn("0" * 1_000_000, done.out)
        self.refused("eid", "-", given="0" * 1_000_001, code=2, saying="1,000,001")

    def test_identifier_text_cannot_move_the_cursor(self):
        evil = ONE_OFF.replace("410064006100", "1B005B003200")
        self.assertNotIn("\x1b", self.zeb("eid", evil).out)
