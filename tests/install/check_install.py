#!/usr/bin/env python3
"""vexa as users get it: installed, its bash completion, its manual page, the examples the page and the README show,
and the .deb; a check whose tool is missing skips (exit 77).
Usage: check_install.py install|completion|man|examples|package VEXA SOURCE BUILD CMAKE CPACK VERSION"""
import glob, os, re, shutil, subprocess, sys, tempfile

CHECK, VEXA, SOURCE, BUILD, CMAKE, CPACK, VERSION = sys.argv[1:8]
VEXA = os.path.abspath(VEXA)
ENV = dict(os.environ, LC_ALL="C", TZ="UTC", MANPAGER="cat", PAGER="cat", MANWIDTH="80")
failures = []


def run(argv, stdin=b"", cwd=None, env=ENV):
    proc = subprocess.run(argv, input=stdin, capture_output=True, cwd=cwd, env=env, timeout=300)
    return proc.returncode, proc.stdout, proc.stderr


def expect(name, actual, wanted):
    if actual != wanted:
        failures.append("%s\n  expected: %r\n  actual:   %r" % (name, wanted, actual))


def need(*tools):
    for tool in tools:
        if not (os.path.exists(tool) if tool.startswith("/") else shutil.which(tool)):
            print("SKIP: %s is not installed, so this check cannot run" % tool)
            sys.exit(77)


def answers_42(name, binary):  # a cross build's programs run under its emulator
    emulator = os.environ.get("VEXA_EMULATOR", "").split()
    expect(name + " answers 2*21", run(emulator + [binary, "2*21"])[1], b"ans = 42\n")


def check_install(tmp):
    # Uninstalling leaves folders that were there before, empty or not, and removes all others the installs made.
    os.makedirs(tmp + "/share/man")
    os.makedirs(tmp + "/share/doc/other")
    for _ in range(2):  # the second install finds the folders the first one made
        expect("cmake --install", run([CMAKE, "--install", BUILD, "--prefix", tmp])[::2], (0, b""))
    answers_42("installed bin/vexa", os.path.join(tmp, "bin", "vexa"))
    expect("manual page", [os.path.basename(p) for p in glob.glob(tmp + "/share/man/man1/vexa.1*")],
           ["vexa.1.gz" if shutil.which("gzip") else "vexa.1"])
    expect("examples", sorted(os.listdir(tmp + "/share/doc/vexa/examples")),
           sorted(os.listdir(SOURCE + "/examples")))
    expect("completion", os.path.isfile(tmp + "/share/bash-completion/completions/vexa"), True)
    run([CMAKE, "--install", BUILD, "--prefix", tmp + "/elsewhere"])  # the manifest now names only that
    status, _, err = run([CMAKE, "-DPREFIX=" + tmp, "-DBUILD=" + BUILD, "-P", SOURCE + "/cmake/uninstall.cmake"],
                         cwd=SOURCE)
    left = sorted(os.path.relpath(os.path.join(d, f), tmp) for d, ds, fs in os.walk(tmp) for f in ds + fs)
    expect("uninstall", (status, err), (0, b""))
    expect("left after uninstalling", [f for f in left if not f.startswith("elsewhere")],
           ["share", "share/doc", "share/doc/other", "share/man"])
    # A manifest this user may not write (left by an install with sudo) cannot stop the next install.
    os.chmod(BUILD + "/install_manifest.txt", 0)
    expect("install over an unwritable manifest",
           run([CMAKE, "--install", BUILD, "--prefix", tmp + "/again"])[::2], (0, b""))


COMPLETION_SCRIPT = r"""
source /usr/share/bash-completion/bash_completion
cd "$2"
__load_completion vexa || exit 1
read -ra COMP_WORDS <<< "$1"
[[ $1 == *" " ]] && COMP_WORDS+=("")
COMP_LINE=$1 COMP_POINT=${#1} COMP_CWORD=$((${#COMP_WORDS[@]} - 1)) COMPREPLY=()
function=$(complete -p vexa) && function=${function#*-F } && ${function%% *} vexa \
    "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
printf '%s\n' "${COMPREPLY[@]}" | LC_ALL=C sort
"""


def check_completion(tmp):
    """The installed completion, as bash-completion finds it under the prefix's share."""
    need("bash", "/usr/share/bash-completion/bash_completion")
    run([CMAKE, "--install", BUILD, "--prefix", tmp + "/prefix"])
    folder = tmp + "/work"
    os.makedirs(folder + "/sub")
    for name in ("Data.FRM", "x.frm", "notes.txt"):
        open(os.path.join(folder, name), "w").close()
    env = dict(ENV, XDG_DATA_DIRS=tmp + "/prefix/share", BASH_COMPLETION_USER_DIR=tmp + "/none")
    files, commands = "Data.FRM notes.txt sub x.frm".split(), "escape md5 sha1 base64 unbase64 url_encode url_decode"
    for line, wanted in [
            ("vexa ", sorted("Data.FRM base64 bench clear comma debug escape exit formula gmtime help hex localtime md5 "
                             "quit reset sha1 sha256 sub unbase64 unhex url_decode url_encode uuid verify x.frm".split())),
            ("vexa sha", ["sha1", "sha256"]), ("vexa D", ["Data.FRM"]), ("vexa n", []), ("vexa 2*3", []),
            ("vexa sha256 no", ["notes.txt"]), ("vexa sha256 notes.txt ", []), ("vexa hex ", []), ("vexa x.frm ", []),
            ("vexa localtime ", []), ("vexa debug o", ["off", "on"]), ("build/vexa url_", ["url_decode", "url_encode"])
    ] + [("vexa %s " % command, files) for command in commands.split()]:
        status, out, err = run(["bash", "-c", COMPLETION_SCRIPT, "bash", line, folder], env=env)
        expect("completion of %r" % line, (status, out.decode().split(), err), (0, wanted, b""))


def check_man(tmp):
    need("man")
    expect("man --warnings", run(["man", "--warnings", "-l", BUILD + "/man/vexa.1"])[::2], (0, b""))


def deroff(line):
    for escape, plain in (("\\(aq", "'"), ("\\(dq", '"'), ("\\(ha", "^"), ("\\(ti", "~"),
                          ("\\-", "-"), ("\\&", "")):
        line = line.replace(escape, plain)
    assert "\\" not in line.replace("\\e", ""), "an escape this script does not read: " + line
    return line.replace("\\e", "\\")


def shown_runs(path):
    """(command, output lines) for every "$ vexa ..." line in the page's .EX/.EE blocks or the README's
    indented blocks; lines before a block's first "$" are no output."""
    text = open(path, encoding="utf-8").read()
    if path.endswith(".1"):
        blocks = [deroff(b) for b in re.findall(r"^\.EX\n(.*?)^\.EE$", text, re.M | re.S)]
    else:
        blocks = ["\n".join(l[4:] for l in b.splitlines()) for b in re.findall(r"(?:^    .*\n|^\n)+", text, re.M)]
    runs = []
    for block in blocks:
        current = None
        for line in block.rstrip("\n").splitlines():
            if line.startswith("$ "):
                current = (line[2:], [])
                runs.append(current)
            elif current:
                current[1].append(line)
    return runs


def check_examples(tmp):
    os.symlink(os.path.abspath(VEXA), os.path.join(tmp, "vexa"))
    path_env = dict(ENV, PATH=tmp + os.pathsep + ENV.get("PATH", ""))
    shown = ""
    for source, cwd, least in (("man/vexa.1", "examples", 10), ("README.md", ".", 6)):
        runs = shown_runs(os.path.join(SOURCE, source))
        expect("examples found in " + source, len(runs) >= least, True)
        for cmd, lines in runs:
            cmd = cmd.replace("build/vexa", "vexa")
            shown += cmd + " "
            if cmd == "vexa":  # a session: the "> " lines are typed, and a pipe shows no echo
                stdin = "".join(l[2:] + "\n" for l in lines if l.startswith("> "))
                wanted = "".join("> " if l.startswith("> ") else l + "\n" for l in lines)
            else:
                stdin, wanted = "", "".join(l + "\n" for l in lines)
            out = run(["bash", "-c", cmd], stdin.encode(), os.path.join(SOURCE, cwd), path_env)[1]
            expect("%s: %s" % (source, cmd), out.decode(), wanted)
    expect("example files never shown", [f for f in os.listdir(os.path.join(SOURCE, "examples"))
                                          if f not in shown], [])


def check_package(tmp):
    need(CPACK, "dpkg-deb", "dpkg-shlibdeps", "file")
    status, out, err = run([CPACK, "-G", "DEB", "--config", os.path.join(BUILD, "CPackConfig.cmake"),
                            "-B", tmp])
    debs = glob.glob(os.path.join(tmp, "*.deb"))
    expect("cpack makes one package", (status, len(debs)), (0, 1))
    if len(debs) != 1:
        return print(out.decode(), err.decode())
    deb = debs[0]  # its fields, documents, reproducibility and stripping are lintian's and CI's to check
    architecture = run(["dpkg-deb", "-f", deb, "Architecture"])[1].decode().strip()
    expect("file name", os.path.basename(deb), "vexa_%s_%s.deb" % (VERSION, architecture))
    run(["dpkg-deb", "-x", deb, tmp + "/root"])
    answers_42("packaged usr/bin/vexa", tmp + "/root/usr/bin/vexa")
    expect("packaged completion", os.path.isfile(tmp + "/root/usr/share/bash-completion/completions/vexa"), True)


with tempfile.TemporaryDirectory() as tmp:
    {"install": check_install, "completion": check_completion, "man": check_man, "examples": check_examples,
     "package": check_package}[CHECK](tmp)
for failure in failures:
    print("FAIL " + failure)
print("%s: %d failed" % (CHECK, len(failures)))
sys.exit(1 if failures else 0)
