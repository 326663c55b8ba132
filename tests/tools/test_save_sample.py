"""zeb save and zeb load on whole real mailboxes, which zeb-import brings in."""
import json
import os
import signal
import subprocess

import test_save
import world
from world import SAMPLES

LINUX_ONLY = True  # as zeb-import is


class Sample(test_save.Save):
    def test_the_sample_mailbox_comes_back_byte_by_byte(self):
        for name in ("enron.pst", "pstextractortest@outlook.com.ost"):
            self.importer("pst", str(SAMPLES / name))
        first = self.saved("first.jsonl", "/")
        lines = [json.loads(line) for line in first.splitlines()]
        self.assertGreater(sum("properties" in line for line in lines), 230)
        self.assert_same(first, self.again("first.jsonl"))
        self.assertIn("is sound", self.zeb("store", "check").out)

    def test_an_interrupted_save_leaves_nothing(self):
        self.importer("pst", str(SAMPLES / "enron.pst"))
        before = sorted(os.listdir(self.folder))
        process = subprocess.Popen([str(world.BUILD / "bin/zeb"), "save", "/", "-o", self.path("out.jsonl")],
                                   env=self.environment, stderr=subprocess.PIPE)
        while process.poll() is None and sorted(os.listdir(self.folder)) == before:
            pass
        process.send_signal(signal.SIGINT)
        said = process.communicate()[1].decode()
        self.assertEqual((process.returncode, said), (1, "zeb: interrupted\n"))
        self.assertEqual([name for name in os.listdir(self.folder) if "out.jsonl" in name], [])
