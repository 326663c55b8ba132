"""An unreadable registry file: one clear error text, and the file is not changed."""
from world import World

LINUX_ONLY = True  # Windows keeps its registry itself; there is no file to be wrong


class BadRegistry(World):
    def test_a_syntax_error_names_its_line(self):
        registry = self.folder / "registry.reg"
        lines = len(registry.read_text().splitlines())
        with registry.open("a") as file:
            file.write("[HKEY_CURRENT_USER\\Software\\Test]\nthis is no value\n")
        broken = registry.read_text()
        for command in (["doctor"], ["inbox"], ["provider", "install"], ["profile", "list"],
                        ["profile", "create", "a", "--store", self.path("a.zeb")]):
            with self.subTest(command=command):
                self.refused(*command, saying=["registry.reg", f"{lines + 2}"])
        self.assertEqual(registry.read_text(), broken)
