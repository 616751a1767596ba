# Sourced by what builds a library from Debian's source package.
#
# fetch_debian_source PACKAGE WORK: the archive's source index and the package's files come into the folder WORK, in a
# state of apt of its own; nothing of the system's package configuration is changed.
fetch_debian_source() {
    local package=$1 work=$2 file
    mkdir -p "$work/lists/partial" "$work/cache/archives/partial" "$work/sources.d"
    for file in /etc/apt/sources.list.d/*.sources; do
        [ -e "$file" ] && sed 's/^Types:.*/Types: deb-src/' "$file" >"$work/sources.d/$(basename "$file")"
    done
    [ -e /etc/apt/sources.list ] && sed -n 's/^deb /deb-src /p' /etc/apt/sources.list >"$work/sources.list"
    local apt=(apt-get -qq -o "Dir::Etc::sourcelist=$work/sources.list" -o "Dir::Etc::sourceparts=$work/sources.d"
               -o "Dir::State::lists=$work/lists" -o "Dir::Cache=$work/cache" -o APT::Sandbox::User=root)
    (cd "$work" && "${apt[@]}" update && "${apt[@]}" source --download-only "$package")
}

# debian_source_version WORK PACKAGE: its name and whole version, for the notice that goes with the libraries.
debian_source_version() {
    sed -n 's/^Source: //p; s/^Version: //p' "$1/$2"_*.dsc | paste -sd' '
}
