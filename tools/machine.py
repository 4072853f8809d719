"""One PC for the real processes: its folders and environment, an installed simulator, the files of a download server,
and the processes started on it."""
import json
import os
import shutil
import subprocess
from pathlib import Path

FOLDERS = ("appdata/Velatra", "appdata/Lockheed Martin/Prepar3D v5", "documents", "public", "runtime", "server",
           "drive_c/Prepar3D v5/Scenery", "drive_c/ProgramData/Lockheed Martin/Prepar3D v5", "program/docs",
           "program/input/my_regcodes", "program/output")
PUBLISHED = ("server", "program/output", "program/airports_p3d.xml")
REGISTRY = "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Lockheed Martin\\Prepar3D v5]\nSetupPath=C:\\Prepar3D v5\n"


class Machine:
    def __init__(self, folder: Path, programs: Path, world: Path):
        self.folder = folder
        self.programs = programs  # the folder of the built or installed programs
        self.world = world  # plain tables, from which everything published is made
        self.program = folder / "program"  # where Velatra runs, and writes
        self.processes = []
        for name in FOLDERS:
            (folder / name).mkdir(parents=True)
        (folder / "appdata" / "registry.ini").write_text(REGISTRY)
        self.environment = dict(
            os.environ, VELATRA_APPDATA=str(folder / "appdata"), VELATRA_DOCUMENTS=str(folder / "documents"),
            VELATRA_PUBLIC_DOCUMENTS=str(folder / "public"), VELATRA_RUNTIME=str(folder / "runtime"),
            VELATRA_DRIVE_C=str(folder / "drive_c"))

        self.set_parameters(SCAN_LIVERIES="false", SCAN_AIRPORTS="false")

    def set_parameters(self, **values: str):
        """The user's settings; what isn't named is as by default."""
        rows = "".join(f'<parameter name="{name}" value="{value}"/>' for name, value in values.items())
        (self.folder / "appdata" / "Velatra" / "parameters.xml").write_text(f"<parameters>{rows}</parameters>")

    def install_addons(self):
        """What the world's users have installed: an aircraft package and sceneries, in the simulator's lists; the next
        start scans them."""
        addons = self.folder / "drive_c" / "Addons"
        for what, out in (("livery-tree", "Velatra World"), ("scenery-tree", "Sceneries")):
            self.publish_one(what, addons / out)
        simulator = Path("Lockheed Martin", "Prepar3D v5")
        (self.folder / "appdata" / simulator / "add-ons.cfg").write_text(
            "[Package.0]\nPATH=C:\\Addons\\Velatra World\nTITLE=Velatra World\nACTIVE=true\nREQUIRED=false\n")
        (self.folder / "drive_c" / "ProgramData" / simulator / "scenery_add-ons.xml").write_text(
            "<List>\n <Path>C:\\Addons\\Sceneries</Path>\n</List>\n")
        (self.program / "output" / "LiveriesScanned.xml").unlink(missing_ok=True)
        self.set_parameters()

    def publish_one(self, what: str, out: Path, *more):
        subprocess.run([self.programs / "velatra-tool", "publish", what, "--world", self.world, "--out", out, *more],
                       check=True, stdout=subprocess.DEVNULL)

    def install_realtraffic(self):
        folder = self.folder / "appdata" / "InsideSystems"
        folder.mkdir()
        (folder / "RealTraffic.jar").touch()

    def publish(self, catalogue: Path):
        """Makes the server's files, the scanned liveries, and the catalogue with the world's airports."""
        for what, out, *more in (("dbase", "server"), ("regcodes", "server"), ("airport-files", "server"),
                                 ("liveries", "program/output"),
                                 ("catalogue", "program/airports_p3d.xml", "--base", catalogue)):
            self.publish_one(what, self.folder / out, *more)

    def copy_published(self, other: Path):
        """Takes over what was published on another machine."""
        for name in PUBLISHED:
            if (other / name).is_dir():
                shutil.copytree(other / name, self.folder / name, dirs_exist_ok=True)
            else:
                shutil.copy(other / name, self.folder / name)

    def start(self, name: str, *arguments, stdout=subprocess.PIPE, stderr=subprocess.STDOUT) -> subprocess.Popen:
        process = subprocess.Popen([str(self.programs / name), *map(str, arguments)], cwd=self.program,
                                   env=self.environment, stdin=subprocess.PIPE, stdout=stdout, stderr=stderr, text=True)
        self.processes.append(process)
        return process

    def start_world(self, *arguments, stderr=subprocess.STDOUT) -> tuple[subprocess.Popen, dict]:
        """The stand-in and what it said when it was ready; Velatra's downloads will come from it. Its summary and
        pictures come to this machine's folder."""
        world = self.start("velatra-standin", "--world", self.world, "--out", self.folder, "--serve",
                           self.folder / "server", "--http-port", 0, *arguments, stderr=stderr)
        ready = json.loads(world.stdout.readline())
        self.environment["VELATRA_SERVER"] = f"http://127.0.0.1:{ready['http']}/"
        return world, ready

    def start_velatra(self, status_seconds: int = 1, **streams) -> subprocess.Popen:
        return self.start("velatra", "--headless", "--status", status_seconds, **streams)

    def summary(self) -> dict:
        """What the stand-in has written: at its end, and whenever it was asked by SIGUSR1."""
        return json.loads((self.folder / "summary.json").read_text())

    def log(self) -> str:
        return (self.program / "Log.txt").read_text()

    def close(self):
        for process in self.processes:
            if process.poll() is None:
                process.kill()
            process.wait()
