# shellcheck shell=bash disable=SC2034 # its variables are used where it is sourced
# What the set-up scripts share. Sourced, never run. Everything it prints goes to standard error.

ORVANE_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
ORVANE_CACHE=${XDG_CACHE_HOME:-$HOME/.cache}/orvane
ORVANE_DATA=${XDG_DATA_HOME:-$HOME/.local/share}/Orvane

# shellcheck source-path=SCRIPTDIR source=steps.sh
source "$ORVANE_ROOT/tools/setup/steps.sh"

# locked FILE COMMAND…: only one process of the user at a time is inside, for one FILE.
locked() {
    local file=$1
    shift
    mkdir -p "$(dirname "$file")"
    (
        if ! flock --nonblock 9; then
            say "Waiting for another set-up that is at work…"
            flock 9
        fi
        "$@"
    ) 9>"$file"
}

# provide FOLDER MAKER…: unless FOLDER is there, MAKER fills the empty folder that is its last argument, which then
# takes the name FOLDER. So a FOLDER that exists is complete, whatever was interrupted before.
provide() {
    if [[ ! -d $1 ]]; then
        locked "$1.lock" make_whole "$@"
    fi
}

make_whole() {
    local folder=$1 unfinished=$1.unfinished
    shift
    if [[ -d $folder ]]; then
        return # made while we waited for the lock
    fi
    rm -rf "$unfinished"
    mkdir "$unfinished"
    "$@" "$unfinished"
    sync --file-system "$unfinished"
    mv --no-target-directory "$unfinished" "$folder"
}

# The names in a list of packages: the first word of each line that is no comment.
packages_in() {
    sed -n 's/^\([a-z0-9][a-z0-9.+-]*\).*/\1/p' "$@"
}

# install_packages NAME…: those that are missing, if any.
install_packages() {
    local installed missing=()
    command -v apt-get >/dev/null ||
        fail "This is made for Debian 12: there is no apt-get here to install what is needed ($*)."
    installed=" $(dpkg-query --show --showformat='${db:Status-Status}=${Package} ' "$@" 2>/dev/null || true)"
    for name in "$@"; do
        [[ $installed == *" installed=$name "* ]] || missing+=("$name")
    done
    if ((${#missing[@]} == 0)); then
        return
    fi
    if ((EUID != 0)) && ! command -v sudo >/dev/null; then
        fail "Packages are missing and there is no sudo. Have an administrator run: apt-get install ${missing[*]}"
    fi
    say "System packages to install: ${missing[*]}"
    ((EUID == 0)) || [[ ! -t 0 ]] || sudo --validate # asks for the password, if any, where it can be seen
    locked "$ORVANE_CACHE/packages.lock" \
        step "Installing ${#missing[@]} system packages" \
        "Check the network and that Debian 12's main archive is configured for apt, then run this again." \
        apt_install "${missing[@]}"
}

apt_install() {
    local as_root=(env DEBIAN_FRONTEND=noninteractive)
    ((EUID == 0)) || as_root=(sudo "${as_root[@]}")
    "${as_root[@]}" apt-get -o DPkg::Lock::Timeout=600 update
    "${as_root[@]}" apt-get -o DPkg::Lock::Timeout=600 install --yes --no-install-recommends "$@"
}

# python_with MODULE: prints a Python that can import MODULE.
python_with() {
    local python
    for python in python3 /usr/bin/python3; do
        if "$python" -c "import $1" 2>/dev/null; then
            printf '%s\n' "$python"
            return
        fi
    done
    return 1
}

# What fetches and converts, where the user has nothing that does: Debian's npm cannot stand beside another Node.js.
packages_of_tools() {
    command -v npm >/dev/null || printf 'npm\n'
    python_with pip >/dev/null || printf 'python3-pip\n'
    python_with numpy >/dev/null || printf 'python3-numpy\n'
}

# install_all LIST…: in one go what the lists of packages and the set-up's own tools still need.
install_all() {
    local packages
    mapfile -t packages < <(packages_in "$@" && packages_of_tools)
    install_packages "${packages[@]}"
}

check_sha256() {
    if ! printf '%s  %s\n' "$1" "$2" | sha256sum --check; then
        printf 'This is not the package that was expected: its checksum differs.\n'
        return 1
    fi
}

# fetch_npm NAME VERSION SHA256 FOLDER: the package's archive as FOLDER/NAME-VERSION.tgz, from the user's registry.
fetch_npm() {
    local name=$1 version=$2 sha256=$3 folder=$4
    cd "$folder"
    npm pack --loglevel=error --ignore-scripts "$name@$version"
    check_sha256 "$sha256" "$name-$version.tgz"
}

# fetch_wheel PYTHON NAME VERSION SHA256 FOLDER: the wheel into FOLDER, from the user's index. The name as in its file.
fetch_wheel() {
    local python=$1 name=$2 version=$3 sha256=$4 folder=$5
    mkdir -p "$folder/tmp" # where its size shows how far it is
    TMPDIR=$folder/tmp "$python" -m pip download --no-deps --only-binary :all: --dest "$folder" "$name==$version"
    rm -rf "$folder/tmp"
    check_sha256 "$sha256" "$folder/$name-$version-py3-none-any.whl"
}

# fetch_source PYTHON NAME VERSION SHA256 FOLDER: the source archive into FOLDER, from the user's index. The name as in its
# file. pip asks the build code of an archive for its name and version, with whatever tools that code wants from the
# index; here something else answers, so that nothing runs that is not pinned.
fetch_source() {
    local python=$1 name=$2 version=$3 sha256=$4 folder=$5 answering=$5/answering
    mkdir -p "$answering/setuptools"
    touch "$answering/setuptools/__init__.py"
    cat >"$answering/setuptools/build_meta.py" <<EOF
import os, shutil

def prepare_metadata_for_build_wheel(folder, settings=None):
    name = "$name-$version.dist-info"
    os.mkdir(os.path.join(folder, name))
    shutil.copy("PKG-INFO", os.path.join(folder, name, "METADATA"))
    return name
EOF
    printf '%s==%s --hash=sha256:%s\n' "$name" "$version" "$sha256" >"$answering/wanted.txt"
    PYTHONPATH=$answering "$python" -m pip download --no-deps --no-binary :all: --no-build-isolation --require-hashes \
        --dest "$folder" --requirement "$answering/wanted.txt"
    rm -rf "$answering"
    check_sha256 "$sha256" "$folder/$name-$version.tar.gz"
}

# An engine is compiled for the processor at hand, and a home folder may be shared by machines or move to another one.
processor_kind() {
    grep --max-count=1 '^flags' /proc/cpuinfo | sha256sum | cut -c 1-12
}
