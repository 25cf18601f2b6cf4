#!/usr/bin/env python3
"""usage: check_flatpak.py PROJECT

Holds the Flatpak manifest to the tree that it builds and to the sandbox that it promises: what it
names exists, it asks for no file system and no network, and it says where the page engine lies.
Whether it builds, it cannot tell.
"""
import pathlib
import re
import sys

# Where the base puts the engine's program; the runtime's toolkit does not look there by itself.
ENGINE_PATH = "--env=QTWEBENGINEPROCESS_PATH=/app/bin/QtWebEngineProcess"


def value(manifest, key):
    found = re.search(rf"^{key}: *'?([^'\n]+?)'?$", manifest, re.MULTILINE)
    return found.group(1) if found else None


def permissions(manifest):
    block = re.search(r"^finish-args:\n((?: *(?:[-#].*)?\n)+)", manifest, re.MULTILINE)
    return re.findall(r"^ *- (\S+)", block.group(1), re.MULTILINE) if block else []


def problems(project, manifest, folder):
    identifier = value(manifest, "id")
    for ending in (".desktop", ".metainfo.xml.in", ".mime.xml"):
        if not (project / "packaging" / f"{identifier}{ending}").is_file():
            yield f"the id {identifier} is not that of a {ending} file"

    command = value(manifest, "command")
    desktop = project / "packaging" / f"{identifier}.desktop"
    if desktop.is_file() and not re.search(rf"^Exec={command}\b", desktop.read_text(), re.MULTILINE):
        yield f"the command {command} is not what the desktop file starts"
    if not re.search(rf"add_executable\({command}\b", (project / "src/qt/CMakeLists.txt").read_text()):
        yield f"the command {command} is no program of the window's"

    options = (project / "cmake/SkarnelOptions.cmake").read_text()
    for name in re.findall(r"-D(SKARNEL_\w+)", manifest):
        if not re.search(rf"(option|set)\({name}\b", options):
            yield f"the build has no option {name}"

    sources = re.findall(r"type: dir, path: ([^ }]+)", manifest)
    if [(folder / path).resolve() for path in sources] != [project.resolve()]:
        yield f"the sources {sources} are not this project"
    for source in re.findall(r"\{type: git[^}]*\}", manifest):
        if "tag:" not in source and "commit:" not in source:
            yield f"nothing says which version of this is meant: {source}"

    if not re.search(r"name: cmark-gfm\b", manifest):
        yield "nothing makes the help's pages, without which the installation ends"

    allowed = {"--socket=wayland", "--socket=fallback-x11", "--socket=pulseaudio", "--share=ipc",
               "--device=dri"}
    asked = permissions(manifest)
    if not asked:
        yield "no permissions were found"
    if value(manifest, "base") == "io.qt.qtwebengine.BaseApp" and ENGINE_PATH not in asked:
        yield f"no page can be drawn without {ENGINE_PATH}"
    for permission in asked:
        if permission not in allowed | {ENGINE_PATH}:
            yield f"the permission {permission} is more than the sandbox promises"


def main():
    project = pathlib.Path(sys.argv[1])
    folder = project / "packaging/flatpak"
    manifests = list(folder.glob("*.yaml"))
    found = [] if len(manifests) == 1 else [f"{len(manifests)} manifests in {folder}"]
    for path in manifests:
        found += [f"{path.name}: {each}" for each in problems(project, path.read_text(), folder)]
    print("\n".join(found))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
