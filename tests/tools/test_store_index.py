"""zeb store index: a store's text index is made, used by searches, kept by changes, checked, repaired and dropped."""
import json
import sqlite3

from world import World, message


class StoreIndex(World):
    def setUp(self):
        super().setUp()
        self.store = self.create_profile("test", "the store ü.zeb")
        self.load(*[message(f"subject {i}", PR_BODY=f"The Straße number {i} is closed.\n" + "x" * (i * 500),
                            PR_SENDER_NAME="Ada Brandt" if i % 2 else "Émile Göğüş") for i in range(20)])

    def index(self, action):
        return json.loads(self.zeb("store", "index", action, "--json").out)

    def names(self, *conditions):
        return sorted(each["subject"] for each in self.found("Inbox", *conditions))

    def run_sql(self, sql):
        database = sqlite3.connect(self.store)
        database.execute(sql)
        database.commit()
        database.close()

    SEARCHES = [("--body", "STRASSE"), ("--body", "STRAßE NUMBER 1"), ("--text", "göğüş"), ("--text", "Subject 7"),
                ("--from", "ada br"), ("--subject", "ject 1"), ("--body", "is"), ("--body", "nothing such"),
                ("--body", "number 1", "--not"), ("--body", "number 19", "--from", "Ada")]

    def test_an_index_is_off_until_it_is_switched_on(self):
        path = self.path(self.store.name)
        self.assertEqual(self.zeb("store", "index", "status").out, f"store file '{path}': no text index\n")
        self.assertEqual(self.index("status")["index"], "off")
        out = self.zeb("store", "index", "on").out
        self.assertIn(f"store file '{path}': text index of 20 messages, ", out)
        self.assertIn(" bytes; 0 waiting\n", out)
        state = self.index("status")
        self.assertEqual((state["index"], state["messages"], state["waiting"]), ("on", 20, 0))
        self.assertGreater(state["bytes"], 1000)
        self.load(message("one more"))
        state = self.index("status")
        self.assertEqual((state["messages"], state["waiting"]), (21, 1))
        self.assertEqual(self.index("on")["waiting"], 0)
        self.assertEqual(self.zeb("store", "index", "off", path).out, f"store file '{path}': no text index\n")
        self.zeb("store", "check")

    def test_searches_find_the_same(self):
        without = [self.names(*search) for search in self.SEARCHES]
        self.assertEqual(len(without[1]), 11)
        self.index("on")
        self.assertEqual([self.names(*search) for search in self.SEARCHES], without)
        self.environment["ZEBSTORE_TRACE"] = self.path("trace")
        self.names("--body", "number 12 ")
        self.names("--body", "is")
        del self.environment["ZEBSTORE_TRACE"]
        notes = [line for line in (self.folder / "trace").read_text(encoding="utf-8").splitlines() if "text index" in line]
        self.assertEqual(set(notes), {"note: folder 3: the text index leaves 1 of 20 messages"})

    def test_the_index_follows_changes(self):
        self.index("on")
        self.zeb("set", "Inbox", "subject 3", "PR_SUBJECT=another name")
        self.zeb("rm", "Inbox", "subject 4")
        self.zeb("rm", "Inbox", "subject 5", "--hard", "--yes")
        self.assertEqual(self.names("--subject", "another NAME"), ["another name"])
        self.assertEqual(self.names("--subject", "subject 3"), [])
        self.assertEqual(self.names("--body", "number 4 "), [])
        self.assertEqual(self.names("--body", "number 5 "), [])
        self.assertEqual(self.index("status")["messages"], 19)
        self.zeb("store", "check")

    def test_a_wrong_index_is_reported_and_made_again(self):
        self.index("on")
        self.run_sql("DELETE FROM text_member WHERE message=(SELECT max(message) FROM text_member)")
        result = self.zeb("store", "check", code=1)
        self.assertIn("the text index: message ", result.err)
        self.assertIn(" is missing", result.err)
        lines = self.zeb("store", "repair", "--in-place").out.splitlines()
        self.assertEqual(len(lines), 2)
        self.assertTrue(lines[0].endswith(": rebuilt"), lines[0])
        self.zeb("store", "check")
        self.assertEqual(self.names("--body", "number 19"), ["subject 19"])

    def test_an_incomplete_index_is_not_used(self):
        self.index("on")
        self.run_sql("DROP TRIGGER text_changed")
        self.assertEqual(self.index("status")["index"], "outdated")
        self.assertIn("another version", self.zeb("store", "index", "status").out)
        self.assertEqual(self.names("--body", "number 12 "), ["subject 12"])
        self.assertIn("it is not used", self.zeb("store", "check", code=1).err)
        self.assertEqual(self.index("on")["index"], "on")
        self.zeb("store", "check")

    def test_what_cannot_be_indexed_is_named(self):
        for action in ("on", "off", "status"):
            self.refused("store", "index", action, self.path("missing.zeb"), saying=["text index", "missing.zeb", "does not exist"])
        (self.folder / "text.zeb").write_text("no database " * 1000)
        self.refused("store", "index", "on", self.path("text.zeb"), saying=["cannot change the text index", "text.zeb"])
        self.zeb("store", "index", code=2)
        self.zeb("store", "index", "on", self.path("x.zeb"), "--profile", "test", code=2)
