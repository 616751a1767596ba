# Sourced; QT_WINDOWS_ROOT and QWT_WINDOWS_ROOT name the Qt and the Qwt for Windows.

# needed_library NAME: where the DLL of that name is, if it is one to be shipped.
needed_library() {
    local compiler folder
    compiler=$(dirname "$(i686-w64-mingw32-g++-posix -print-file-name=libgcc_s_dw2-1.dll)")
    for folder in "$QT_WINDOWS_ROOT/bin" "${QWT_WINDOWS_ROOT:-}/bin" "$compiler" /usr/i686-w64-mingw32/lib; do
        [ ! -e "$folder/$1" ] || { echo "$folder/$1"; return; }
    done
}

# copy_needed_libraries FOLDER: copies beside the programs in a folder the DLLs that they, their plugins and these DLLs
# need. What is in none of the places of needed_library is a part of Windows.
copy_needed_libraries() {
    local folder=$1 copied=1 name source
    while [ $copied = 1 ]; do
        copied=0
        for name in $(find "$folder" \( -name '*.exe' -o -name '*.dll' \) -exec i686-w64-mingw32-objdump -p {} + |
                      sed -n 's/^\tDLL Name: //p' | sort -u); do
            [ ! -e "$folder/$name" ] || continue
            source=$(needed_library "$name")
            if [ -n "$source" ]; then
                cp "$source" "$folder/"
                copied=1
            fi
        done
    done
}
