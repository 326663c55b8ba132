"""zeb store repair and zeb store compact: a store's file is repaired in a copy or in place, with one line per repair."""
import sqlite3

from world import World, message


class Care(World):
    def setUp(self):
        super().setUp()
        self.store = self.create_profile("test", "the store ü.zeb")
        self.load(*[message(f"subject {i}", PR_BODY="x" * 9000) for i in range(10)])

    def spoil(self, sql):
        database = sqlite3.connect(self.store)
        database.execute(sql)
        database.commit()
        database.close()

    def spoil_counter_and_leave_an_orphan(self):
        self.spoil("UPDATE contents SET rows=7 WHERE container=6")
        self.spoil("INSERT INTO large(id, size) VALUES(500, 3)")

    FINDINGS = ["large value 500 belongs to nothing: removed",
                "folder 3: its counters do not match its messages: rebuilt (10 messages, 0 unread)"]

    def test_an_intact_store_needs_no_repair(self):
        out = self.zeb("store", "repair", "--in-place").out
        self.assertEqual(out, f"store file '{self.path(self.store.name)}': 0 repairs\n")
        self.zeb("store", "check")

    def test_a_copy_is_repaired(self):
        self.spoil_counter_and_leave_an_orphan()
        lines = self.zeb("store", "repair").out.splitlines()
        self.assertEqual(lines[:-1], self.FINDINGS)
        self.assertIn("2 repairs, in the copy '", lines[-1])
        self.assertIn("the store ü.repaired.zeb'", lines[-1])
        self.assertTrue((self.folder / "the store ü.repaired.zeb").exists())
        self.zeb("store", "check", code=1)
        self.refused("store", "repair", saying=["the store ü.repaired.zeb", "exists already"])

    def test_a_copy_goes_where_wanted(self):
        self.spoil_counter_and_leave_an_orphan()
        self.zeb("store", "repair", "--output", self.path("other.zeb"))
        self.assertEqual(self.zeb("store", "repair", self.path("other.zeb"), "--in-place").out,
                         f"store file '{self.path('other.zeb')}': 0 repairs\n")
        self.zeb("store", "repair", "--in-place", "--output", self.path("x.zeb"), code=2)

    def test_a_file_is_repaired_in_place(self):
        self.spoil_counter_and_leave_an_orphan()
        lines = self.zeb("store", "repair", "--in-place").out.splitlines()
        self.assertEqual(lines[:-1], self.FINDINGS)
        self.zeb("store", "check")
        self.assertFalse((self.folder / "the store ü.repaired.zeb").exists())

    def test_what_cannot_be_repaired_is_named(self):
        self.refused("store", "repair", self.path("missing.zeb"), saying=["cannot repair", "missing.zeb", "does not exist"])
        (self.folder / "text.zeb").write_text("no database " * 1000)
        self.refused("store", "repair", self.path("text.zeb"), saying=["cannot repair", "text.zeb"])
        self.assertFalse((self.folder / "text.repaired.zeb").exists())
        self.refused("store", "repair", "--profile", "nobody", saying="nobody")

    def test_a_compact_file_is_smaller(self):
        self.spoil("CREATE TABLE room AS SELECT randomblob(3000000) AS bytes")
        self.spoil("DROP TABLE room")
        before = self.store.stat().st_size
        out = self.zeb("store", "compact").out
        self.assertLess(self.store.stat().st_size, before - 2900000)
        self.assertIn("bytes before, ", out)
        self.assertEqual(self.zeb("inbox").out.count("subject "), 10)
        self.zeb("store", "check")
        self.refused("store", "compact", self.path("missing.zeb"), saying=["cannot compact", "missing.zeb"])
