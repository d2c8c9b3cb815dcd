#!/usr/bin/env bash
# The project within another one, and its static library. Arguments: the project's folder, a scratch folder.
set -euo pipefail
project=$1
scratch=$(mktemp -d "$(realpath "$2")/subproject-XXXXXX")
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
fail() { echo "subproject_test: $*" >&2; exit 1; }
mkdir parent
cat >parent/CMakeLists.txt <<END
cmake_minimum_required(VERSION 3.25)
project(parent LANGUAGES C CXX)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY \${PROJECT_BINARY_DIR}/programs)
add_subdirectory($project orbntf)
add_executable(list $project/docs/example/list.c)
target_link_libraries(list PRIVATE orbntf::orbntf)
END
cmake -S parent -B build -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build --target list orbntf_tool >/dev/null
[ -x build/programs/list ] || fail "the parent's output folder"
[ -x build/programs/orbntf ] || fail "the tool's place"
cmake --build build --target help | grep -q '^orbntf_tests:' && fail "tests within another project"
printf 'words' >words.txt
build/programs/orbntf new -o a.ntf --text words.txt --station S
build/programs/list a.ntf | grep -q '1 texts' || fail "a program of the parent: $(build/programs/list a.ntf)"

cmake -S "$project" -B static -G Ninja -DCMAKE_BUILD_TYPE=Release -DORBNTF_CORE=OFF -DORBNTF_TESTS=OFF \
  -DORBNTF_STATIC_LIBRARY=ON >/dev/null
cmake --build static --target all >/dev/null
cmake --install static --prefix "$scratch/prefix" >/dev/null
[ -z "$(find prefix -name '*core*')" ] || fail "a part of the core: $(find prefix -name '*core*')"
[ -n "$(find prefix -name liborbntf.a)" ] || fail "no static library: $(find prefix -name 'lib*')"
mkdir user
cat >user/CMakeLists.txt <<END
cmake_minimum_required(VERSION 3.25)
project(user LANGUAGES C CXX)
find_package(orbntf REQUIRED)
add_executable(list $project/docs/example/list.c)
target_link_libraries(list PRIVATE orbntf::static)
END
cmake -S user -B user/build -DCMAKE_PREFIX_PATH="$scratch/prefix" >/dev/null
cmake --build user/build >/dev/null
user/build/list a.ntf | grep -q '1 texts' || fail "a program with the static library"
ldd user/build/list | grep -q 'liborbntf\.so' && fail "the static library is not used"
echo "subproject: works within another project, and as a static library without the core"
