#!/bin/bash
# Installs the project into a stage, moves the stage away, and builds a program outside of the
# project against it, once by each route.
# Usage: routes.sh STEP [COMPILER]; the surroundings come in the variables checked below.
set -euo pipefail
: "${SOURCE:?}" "${BUILD:?}" "${WORK:?}" "${CMAKE:?}" "${PREFIX:?}" "${LIBDIR:?}" "${INCLUDEDIR:?}" "${DOCDIR:?}" "${CONFIG:?}"
: "${SANITIZE=}" "${WITH_KIT=}"

step=$1
export CXX=${2:-c++}
here=$SOURCE/tests/install
moved=$WORK/moved
warnings="-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror"
flags=$warnings
[ -z "$SANITIZE" ] || flags+=" -fsanitize=$SANITIZE -fno-sanitize-recover=all"

fail() {
    echo "$step: $*" >&2
    exit 1
}

# files COMPONENT...: what these components install, as a sorted list
files() {
    rm -rf "$WORK/listed"
    for component in "$@"; do
        DESTDIR=$WORK/listed "$CMAKE" --install "$BUILD" --component "$component" >/dev/null
    done
    (cd "$WORK/listed$PREFIX" && find . ! -type d | sed 's|^\./||' | LC_ALL=C sort)
}

# build NAME ARGUMENT...: an outside project of CMake's, configured, built and run
build() {
    local name=$1
    shift
    local dir
    dir=$WORK/build-$name-$(basename "$CXX")
    rm -rf "$dir"
    "$CMAKE" -S "$here/outside/$name" -B "$dir" -DCMAKE_CXX_FLAGS="$flags" \
        -DCMAKE_CXX_STANDARD="${STANDARD:-11}" -DCMAKE_CXX_EXTENSIONS=OFF "$@" >"$dir.log" 2>&1 ||
        { cat "$dir.log" && fail "cannot configure"; }
    "$CMAKE" --build "$dir" --verbose >>"$dir.log" 2>&1 || { cat "$dir.log" && fail "cannot build"; }
    "$dir/outside" || fail "the program failed"
}

# expected_files: the two lists below, with the directories of this installation
expected_files() {
    sed -e "s|LIBDIR|$LIBDIR|; s|INCLUDEDIR|$INCLUDEDIR|; s|CONFIG|${CONFIG,,}|" | LC_ALL=C sort
}

case $step in
stage)
    rm -rf "$WORK" && mkdir -p "$WORK/stage"
    components="Runtime Development Recorder Documentation"
    [ -z "$WITH_KIT" ] || components+=" Kit"
    for component in $components; do
        DESTDIR=$WORK/stage "$CMAKE" --install "$BUILD" --component "$component" >/dev/null
    done
    mv "$WORK/stage$PREFIX" "$moved"
    # What is installed knows nothing of where it was built or staged.
    for path in "$SOURCE/" "$BUILD/" "$WORK/" "$PREFIX/lib" "$PREFIX/include"; do
        if [ -z "$SANITIZE" ] && grep -rlF --exclude='*.md' -- "$path" "$moved"; then
            fail "the files above contain the path $path"
        fi
    done
    ;;
plugin)
    # The link under which the framework opens the library leads to it, wherever it is wanted. The
    # library is not built again for this.
    while read -r prefix libdir plugin place; do
        rm -rf "$WORK/plugin" "$WORK/plugin-image"
        "$CMAKE" -S "$SOURCE" -B "$WORK/plugin" -DBUILD_TESTING=OFF -DCMAKE_BUILD_TYPE="$CONFIG" \
            -DCMAKE_INSTALL_PREFIX="$prefix" -DCMAKE_INSTALL_LIBDIR="$libdir" \
            -DCOMMUNICATIONS_SERVICE_PLUGIN="$plugin" >"$WORK/plugin.log" 2>&1 ||
            { cat "$WORK/plugin.log" && fail "cannot configure with $plugin"; }
        cp -P "$BUILD"/src/libCommunicationsServiceClient.so* "$WORK/plugin/src/"
        DESTDIR=$WORK/plugin-image "$CMAKE" --install "$WORK/plugin" --component Runtime >/dev/null
        [ -L "$WORK/plugin-image$place" ] || fail "with $plugin there is no link $place"
        [ -e "$WORK/plugin-image$place" ] ||
            fail "with $plugin, $place leads to $(readlink "$WORK/plugin-image$place")"
    done <<END
/usr lib plugin.so /usr/plugin.so
/usr lib lib/plugin.so /usr/lib/plugin.so
/usr lib/triplet lib/libCommunicationsServiceClient.so /usr/lib/libCommunicationsServiceClient.so
/usr lib/triplet lib/framework/client.so /usr/lib/framework/client.so
/usr lib /opt/framework/client.so /opt/framework/client.so
/usr /opt/lib share/client.so /usr/share/client.so
END
    ;;
components)
    diff <(files Runtime) <(expected_files <"$here/files-runtime.txt") ||
        fail "component Runtime installs other files (<) than files-runtime.txt lists (>)"
    diff <(files Development) <(expected_files <"$here/files-development.txt") ||
        fail "component Development installs other files (<) than files-development.txt lists (>)"
    ;;
find_package)
    build find_package -DCMAKE_PREFIX_PATH="$moved"
    build headers -DCMAKE_PREFIX_PATH="$moved"
    ;;
no-kit)
    rm -rf "$WORK/no-kit" && mkdir "$WORK/no-kit"
    for component in Runtime Development; do
        DESTDIR=$WORK/no-kit "$CMAKE" --install "$BUILD" --component "$component" >/dev/null
    done
    if "$CMAKE" -S "$here/outside/kit" -B "$WORK/build-no-kit" \
        -DCMAKE_PREFIX_PATH="$WORK/no-kit$PREFIX" >"$WORK/no-kit.log" 2>&1; then
        fail "the kit was found where it is not"
    fi
    tr -s '\n ' ' ' <"$WORK/no-kit.log" | grep -q 'development kit is not installed here' ||
        { cat "$WORK/no-kit.log" && fail "it is not said that the kit is missing"; }
    ;;
uninstall)
    # As the quick start tells it: what the list names is all that there is.
    rm -rf "$WORK/prefix"
    "$CMAKE" --install "$BUILD" --prefix "$WORK/prefix" >/dev/null
    xargs rm <"$BUILD/install_manifest.txt"
    [ -z "$(find "$WORK/prefix" ! -type d)" ] || fail "left: $(find "$WORK/prefix" ! -type d)"
    ;;
pages)
    # What the installed pages quote or link to is installed too.
    cd "$moved/$DOCDIR"
    wrong=0
    while IFS=: read -r page target; do
        [ -e "$target" ] || [ -e "$(dirname "$page")/$target" ] ||
            { echo "$page names $target, which is not installed" && wrong=1; }
    done < <(grep -roP --include='*.md' '(?<=<!-- from )[^ ]+|(?<=\]\()(?![a-z]+:|#)[^)# ]+(?=[)#])' . | LC_ALL=C sort -u)
    # So are the headers that they name.
    while read -r header; do
        [ -z "$WITH_KIT" ] || [ -e "$moved/$INCLUDEDIR/communications-service/$header" ] ||
            { echo "$header is named, but not installed" && wrong=1; }
    done < <(grep -rhoP --include='*.md' '\b(application|framework|kit/\w+)/\w+\.h\b' . | sort -u)
    [ -n "$(find . -name '*.md')" ] && [ $wrong = 0 ] || fail "the pages above are at fault"
    [ -z "$(find . -type d -empty)" ] || fail "empty: $(find . -type d -empty)"
    ;;
version)
    # A request for another major version, or for a newer one, must not be met.
    for version in 0.9 2.0 1.99; do
        sed "s/CommunicationsService 1.0/CommunicationsService $version/" \
            "$here/outside/find_package/CMakeLists.txt" >"$WORK/CMakeLists.txt"
        if "$CMAKE" -S "$WORK" -B "$WORK/build-version" -DCMAKE_PREFIX_PATH="$moved" \
            >"$WORK/version.log" 2>&1; then
            fail "version $version was found"
        fi
        grep -q 'compatible with requested version' "$WORK/version.log" ||
            { cat "$WORK/version.log" && fail "version $version failed for another reason"; }
    done
    ;;
pkg-config)
    export PKG_CONFIG_PATH=$moved/$LIBDIR/pkgconfig
    out=$WORK/outside-pkg-config-$(basename "$CXX")
    # shellcheck disable=SC2046,SC2086  # lists of words
    $CXX -std=c++11 $flags $(pkg-config --cflags communications-service-client) \
        "$here/outside/main.cpp" "$here/outside/framework.cpp" -o "$out" \
        $(pkg-config --libs communications-service-client)
    LD_LIBRARY_PATH=$moved/$LIBDIR "$out" || fail "the program failed"
    # shellcheck disable=SC2046,SC2086  # lists of words
    $CXX -std=c++17 $flags $(pkg-config --cflags communications-service-kit) \
        "$here/outside/kit/main.cpp" -o "$out" $(pkg-config --libs communications-service-kit)
    # Nobody has told the loader of the place: the program knows it.
    env -u LD_LIBRARY_PATH "$out" >/dev/null || fail "the program with the kit failed"
    ;;
add_subdirectory | fetch_content)
    build "$step" -DCLIENT_SOURCE_DIR="$SOURCE" -DCOMMUNICATIONS_SERVICE_SANITIZE="$SANITIZE"
    ;;
kit)
    STANDARD=17 build kit -DCMAKE_PREFIX_PATH="$moved"
    ;;
mocks)
    STANDARD=17 build mocks -DCMAKE_PREFIX_PATH="$moved"
    ;;
new-application)
    # The application that the console phone begins, with nothing changed, by the commands that it
    # says: it alone knows of this prefix. CMake has a target of the same name.
    rm -rf "$WORK/begun" && mkdir "$WORK/begun" && cd "$WORK/begun"
    "$moved/bin/communications-phone" --new-application test >said
    sed -n 's/^  //p' said >commands
    CXXFLAGS=$flags sh -e commands >log 2>&1 || { cat log && fail "it does not build or pass"; }
    [ -x test/build/test-desk ] || fail "the program has another name"
    grep -q '100% tests passed, 0 tests failed out of 2' log || { cat log && fail "no tests"; }
    ;;
quick-start)
    # The quick start as its page tells it: the program that it shows, in a folder of its own.
    rm -rf "$WORK/quick-start" && cp -r "$here/outside/quick-start" "$WORK/"
    cp "$SOURCE/examples/answer-calls.cpp" "$WORK/quick-start/"
    cd "$WORK/quick-start"
    CXXFLAGS=$flags "$CMAKE" -B build -DCMAKE_PREFIX_PATH="$moved" >log
    "$CMAKE" --build build >>log || { cat log && fail "cannot build"; }
    [ "$(build/answering-machine)" = "1001 speaks with sip:2001" ] || fail "no call was answered"
    ;;
headers)
    # Each header alone, in every language version from the oldest that it promises.
    cd "$moved/$INCLUDEDIR/communications-service"
    # shellcheck disable=SC2016  # expanded by the inner shell
    find . -name '*.h' | LC_ALL=C sort | while read -r header; do
        standards="c++11 c++14 c++17 c++20 c++2b"
        case $header in ./kit/*) standards="c++17 c++2b" ;; esac
        for standard in $standards; do echo "${header#./} $standard"; done
    done | xargs -P "$(nproc)" -L 1 sh -c 'echo "#include \"$2\"" |
        $0 -std=$3 $1 -I. -x c++ -fsyntax-only - ||
        { echo "$2 does not compile alone as $3" >&2 && exit 255; }' "$CXX" "$warnings" ||
        fail "the header above is at fault"
    ;;
*)
    fail "no such step"
    ;;
esac
