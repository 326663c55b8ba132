"""zeb save and zeb load on whole real mailboxes, which zeb-import imports."""
import fcntl
import json
import os
import resource
import signal
import subprocess

import test_save
import world
from world import SAMPLES

LINUX_ONLY = True  # as zeb-import is


class Sample(test_save.Save):
    def test_the_sample_comes_back_exactly(self):
        for name in ("enron.pst", "pstextractortest@outlook.com.ost"):
            self.importer("pst", str(SAMPLES / name))
        first = self.saved("first.jsonl", "/")
        lines = [json.loads(line) for line in first.splitlines()]
        self.assertGreater(sum("properties" in line for line in lines), 230)
        self.assert_same(first, self.again("first.jsonl"))
        self.assertIn("is intact", self.zeb("store", "check").out)

    def test_an_interrupted_save_leaves_nothing(self):
        self.importer("pst", str(SAMPLES / "enron.pst"))
        before = [name for name in os.listdir(self.folder) if "jsonl" in name]
        # The trace goes to a pipe with a small buffer, so the program waits for the reader.
        trace = self.folder / "trace"
        os.mkfifo(trace)
        process = subprocess.Popen([str(world.BUILD / "bin/zeb"), "save", "/", "-o", self.path("out.jsonl")],
                                   env=dict(self.environment, ZEBSTORE_TRACE=str(trace)), stderr=subprocess.PIPE)
        with trace.open("rb", buffering=0) as pipe:
            fcntl.fcntl(pipe, fcntl.F_SETPIPE_SZ, 4096)
            read = b""
            while b"GetRecipientTable" not in read:
                read += pipe.read(256)
            process.send_signal(signal.SIGINT)
            while pipe.read(65536):
                pass
        said = process.communicate()[1].decode()
        self.assertEqual((process.returncode, said), (1, "zeb: interrupted\n"))
        self.assertEqual([name for name in os.listdir(self.folder) if "jsonl" in name], before)

    def test_an_unfinished_file_is_removed(self):
        self.load(*[world.message(f"{i:04}") for i in range(200)])
        size = len(self.saved("whole.jsonl", "Inbox"))
        self.assertGreater(size, 40_000, "room for what the store itself writes")
        # One byte too few: writing the end fails when the file is closed.
        for limit in (size - 1, 40_000):
            # The limit would cut the provider's trace too.
            done = self.run_tool("zeb", "save", "Inbox", "-o", self.path("out.jsonl"), traced=False, restore_signals=False,
                                 preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)))
            self.one_sentence(self.check(done, 1), ["out.jsonl", "cannot be written"])
            self.assertEqual([name for name in os.listdir(self.folder) if "out.jsonl" in name], [])
