"""Profiles and stores that cannot be used: one clear error text each."""
from world import World, message


class BadStore(World):
    def setUp(self):
        super().setUp()
        self.store = self.create_profile("test", "the-store.zeb")
        self.load(*[message(f"subject {i}", PR_BODY="x" * 3000) for i in range(100)])

    def remove_side_files(self):
        for suffix in ("-wal", "-shm"):
            self.store.with_name(self.store.name + suffix).unlink(missing_ok=True)

    def test_a_profile_that_does_not_exist(self):
        self.refused("inbox", "--profile", "nobody", saying="there is no profile 'nobody'")

    def test_a_file_too_short(self):
        self.remove_side_files()
        for size in (0, 1, 99):
            with self.subTest(size=size):
                short = self.store.read_bytes()[:size] if size else b""
                self.store.write_bytes(short)
                self.refused("inbox", saying=["the-store.zeb", f"it has only {size} bytes"])
                self.assertEqual(self.store.read_bytes(), short)
                self.store.write_bytes(b"SQLite format 3\0" + bytes(200))

    def test_a_missing_store_file(self):
        self.store.unlink()
        self.remove_side_files()
        self.refused("inbox", saying="the-store.zeb")
        self.assertFalse(self.store.exists(), "it is not created again")

    def test_a_file_that_is_no_database(self):
        self.remove_side_files()
        self.store.write_text("not a database, just text " * 400)
        before = self.store.read_bytes()
        self.refused("inbox", saying="the-store.zeb")
        self.assertEqual(self.store.read_bytes(), before)

    def test_a_truncated_file(self):
        self.remove_side_files()
        half = self.store.read_bytes()[:self.store.stat().st_size // 2]
        self.store.write_bytes(half)
        self.refused("inbox", saying="the-store.zeb")
        self.assertEqual(self.store.read_bytes(), half)

    def test_a_newer_schema(self):
        self.remove_side_files()
        data = bytearray(self.store.read_bytes())
        data[60] = 0x7F  # the high byte of SQLite's user version
        self.store.write_bytes(data)
        self.refused("inbox", saying=["the-store.zeb", f"schema version {int.from_bytes(data[60:64], 'big')};"])
        self.assertEqual(self.store.read_bytes(), bytes(data))
