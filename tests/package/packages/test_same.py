"""The same sources give the same bytes."""
import hashlib
import os
import pathlib
import shutil
import subprocess

import packaged


def digests(folder):
    return {path.name: hashlib.sha256(path.read_bytes()).hexdigest() for path in sorted(folder.iterdir())}


class SameTest(packaged.PackageTest):
    """Packs once more what is built."""

    def test_packing_again_gives_the_same_bytes(self):
        first = digests(packaged.PACKAGES)
        self.assertGreaterEqual(len(first), 7)
        self.addCleanup(shutil.copytree, shutil.copytree(packaged.PACKAGES, self.folder / "first"), packaged.PACKAGES,
                        dirs_exist_ok=True)
        packaged.run(packaged.ROOT / "scripts/make-packages.sh")
        self.assertEqual(digests(packaged.PACKAGES), first)


class OtherFolderTest(packaged.PackageTest):
    """Builds everything once more, from a copy of the sources in another folder and without the compiler cache."""

    def test_another_folder_gives_the_same_bytes(self):
        copy = self.folder / "a-longer-folder-name/sources"
        names = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=packaged.ROOT,
                               check=True, capture_output=True).stdout.decode().split("\0")
        for name in filter(None, names):
            target = copy / name
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(packaged.ROOT / name, target)
        (copy / "build").mkdir()
        shutil.copytree(packaged.ROOT / "build/deps", copy / "build/deps", symlinks=True)
        environment = dict(os.environ, CCACHE_DISABLE="1")
        done = subprocess.run([str(copy / "scripts/make-packages.sh")], env=environment, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
        self.assertEqual(done.returncode, 0, done.stdout)
        first, second = digests(packaged.PACKAGES), digests(pathlib.Path(copy / "build/packages"))
        self.assertGreaterEqual(len(first), 7)
        self.assertEqual([name for name in first if second.get(name) != first[name]], [], "these differ")
        self.assertEqual(second, first)
