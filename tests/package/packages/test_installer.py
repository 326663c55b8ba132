"""The installer: what it installs runs, and its uninstaller leaves nothing behind."""
import os
import pathlib
import re
import shutil
import time

import packaged

SETUP = packaged.PACKAGES / f"zebapi-{packaged.VERSION}-windows-x64-setup.exe"
PLACE = "C:\\installed"
UNINSTALL = "HKEY_CURRENT_USER\\Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\ZebAPI"
MAIL = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Clients\\Mail\\Microsoft Outlook"


def drive():
    return packaged.PREFIX / "drive_c"


def files():
    """Every file and folder of drive C, without the temporary ones."""
    return {str(path) for path in drive().rglob("*") if "/Temp/" not in str(path) + "/"}


def in_place():
    """What is in the folder of the installation, and the folder; while it is being deleted, what is still there."""
    folder = drive() / "installed"
    below = [pathlib.Path(at) / name for at, folders, names in os.walk(folder) for name in folders + names]
    return [path.relative_to(drive()).as_posix() for path in [folder, *sorted(below)] if path.exists()]


# Times of changes; the time of a driver, which Wine notes at each start; and that the next start of Windows deletes the copy of
# the uninstaller that ran, in the folder of temporary files.
PASSING = re.compile(r'#|;|WINE|"DriverDateData"|"PendingFileRenameOperations"=.*~nsu')


def registry():
    """Every key and value, after Wine has written them."""
    packaged.stop_wine()
    found, key = set(), ""
    for name in ("user.reg", "system.reg"):
        for line in (packaged.PREFIX / name).read_text(encoding="utf-8", errors="replace").splitlines():
            if line.startswith("["):
                key = name + re.sub(r"\] \d+$", "]", line)
                found.add(key)
            elif line and not PASSING.match(line):
                found.add(f"{key} {line}")
    return found


class InstallerTest(packaged.PackageTest):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        # Of a run that was interrupted.
        shutil.rmtree(drive() / "installed", ignore_errors=True)
        packaged.wine("cmd", "/c", "exit")
        packaged.wine("reg", "delete", MAIL, "/f", code=None)
        # Windows' own notes about a first installation are made before anything is compared.
        cls.install()
        cls.uninstall()
        cls.files, cls.registry = files(), registry()

    @classmethod
    def tearDownClass(cls):
        packaged.stop_wine()

    @staticmethod
    def install(*options):
        packaged.wine(SETUP, "/S", *options, f"/D={PLACE}")

    @staticmethod
    def uninstall(left=()):
        """@param left what stays in the folder, which is deleted when nothing does"""
        packaged.wine(f"{PLACE}\\uninstall.exe", "/S")
        # It goes on in a copy of itself, which deletes it.
        end = time.monotonic() + 120
        while in_place() != list(left) and time.monotonic() < end:
            time.sleep(0.2)
        time.sleep(1)

    def is_as_before(self):
        self.assertEqual(sorted(files() ^ self.files), [])
        self.assertEqual(sorted(registry() ^ self.registry), [])

    def test_it_installs_and_leaves_nothing(self):
        self.install()
        installed = drive() / "installed"
        for name in ("bin/zeb.exe", "bin/zebstore.dll", "lib/libzebapi.dll.a", "msvc/bin/zebapi.dll", "msvc/lib/zebapi.lib"):
            self.assertTrue((installed / name).is_file(), name)
        self.assertIn(packaged.VERSION, packaged.wine(f"{PLACE}\\bin\\zeb.exe", "--version"))
        self.assertIn(packaged.VERSION, packaged.wine(f"{PLACE}\\msvc\\bin\\zeb.exe", "--version"))
        self.assertIn(f"{PLACE}\\uninstall.exe", packaged.wine("reg", "query", UNINSTALL))
        self.assertIn("not set", packaged.wine(f"{PLACE}\\bin\\zeb.exe", "provider", "status"))
        self.uninstall()
        self.is_as_before()

    def test_it_registers_and_restores_the_provider(self):
        self.install("/PROVIDER")
        self.assertIn(f"{PLACE}\\bin\\zebstore.dll", packaged.wine(f"{PLACE}\\bin\\zeb.exe", "provider", "status"))
        self.uninstall()
        self.is_as_before()

    def test_another_registration_stays(self):
        packaged.wine("reg", "add", MAIL, "/v", "DLLPathEx", "/d", "C:\\other.dll", "/f")
        # Another provider is not replaced: the rest is installed, and the exit code says so.
        packaged.wine(SETUP, "/S", "/PROVIDER", f"/D={PLACE}", code=3)
        self.uninstall()
        self.assertIn("C:\\other.dll", packaged.wine("reg", "query", MAIL))
        packaged.wine("reg", "delete", MAIL, "/f")
        self.is_as_before()

    def test_files_of_the_user_stay(self):
        self.install()
        own = drive() / "installed/bin/own.zeb"
        own.write_text("mine", encoding="utf-8")
        left = ["installed", "installed/bin", "installed/bin/own.zeb"]
        self.uninstall(left)
        self.assertEqual(in_place(), left)
        own.unlink()
        os.removedirs(own.parent)
        self.is_as_before()
