# Compiler settings that every target of the project shares, as the interface target dm_options.
set(DM_SANITIZE "" CACHE STRING "Sanitizers: trap (mingw), address,undefined or thread (native)")
option(DM_COVERAGE "Count which lines and branches the tests run (tools/coverage)" OFF)
option(DM_PRODUCT_ONLY "Configure only what ./run needs: no tests, no packages, and none of their tools" OFF)
option(DM_UNITY "Compile the sources of a folder as one: quicker, for builds that are only tested" OFF)
option(DM_BENCH "Configure the benchmarks (needs tools/packages/bench); see ./bench" OFF)
option(DM_KIT "Add the benchmarks to the tests, for the test kit (tests/kit)" OFF)
option(DM_FUZZ "Build the fuzzers (clang) in place of the unit tests" OFF)
set(DM_DEBUG_INFO 1 CACHE STRING "Debug information: 1 for lines in stack traces, 2 for variables too")

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# A third of the compile time and most of a program's size would go into variables and types.
add_compile_options($<$<COMPILE_LANGUAGE:C,CXX>:-g${DM_DEBUG_INFO}>)

if(NOT DM_COVERAGE)
    set(map_source -ffile-prefix-map=${CMAKE_SOURCE_DIR}=.)
    set(map_binary -ffile-prefix-map=${CMAKE_BINARY_DIR}=build)
endif()
# dm_unprotected: all but the stack protector, for the code that the stack protector itself needs.
add_library(dm_unprotected INTERFACE)
add_library(dm_options INTERFACE)
target_link_libraries(dm_options INTERFACE dm_unprotected)
target_compile_options(dm_unprotected INTERFACE
    $<$<COMPILE_LANGUAGE:CXX>:-Wall;-Wextra;-Wpedantic;-Wconversion;-Wshadow;-Werror>
    # Two builds of one commit give identical bytes, wherever they are made. A coverage build keeps
    # its paths: they name the files for its counts.
    $<$<COMPILE_LANGUAGE:C,CXX>:${map_source}>
    $<$<COMPILE_LANGUAGE:C,CXX>:${map_binary}>)

if(WIN32)
    # msvcrt's own printf is what the ms_printf format checks speak of; no replacement by libmingwex.
    target_compile_definitions(dm_unprotected INTERFACE
        WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0601 __USE_MINGW_ANSI_STDIO=0)
    target_link_options(dm_options INTERFACE -static -Wl,--no-insert-timestamp)

    # Makes it harder to turn a defect of a program into an attack. tests/package looks for it in
    # the finished programs.
    add_library(dm_hardening INTERFACE)
    target_compile_options(dm_hardening INTERFACE
        $<$<COMPILE_LANGUAGE:C,CXX>:-fstack-protector-strong>)
    # The checked library calls need the optimiser.
    target_compile_definitions(dm_hardening INTERFACE $<$<NOT:$<CONFIG:Debug>>:_FORTIFY_SOURCE=2>)
    # The archive, by its file name because -lssp would import libssp-0.dll, holds the checked functions.
    # Its other part, which makes the secret value, loads libraries before main: stack_guard stands in
    # its place, so the linker does not take that part.
    target_link_libraries(dm_hardening INTERFACE stack_guard -l:libssp.a)
    target_link_options(dm_hardening INTERFACE
        -Wl,--dynamicbase -Wl,--high-entropy-va -Wl,--nxcompat)
    target_link_libraries(dm_options INTERFACE dm_hardening)
endif()

if(DM_SANITIZE STREQUAL "trap")
    # mingw has no sanitizer run time: a violation is an illegal instruction. Test code itself is not
    # checked here: the checks double its compile time, and the preset native checks most of it. With
    # the options of the preset windows a compiler cache compiles it once for both. -Og compiles quickest
    # (cmake/DmTargets.cmake).
    target_compile_options(dm_unprotected INTERFACE
        $<$<AND:$<COMPILE_LANGUAGE:CXX>,$<NOT:$<BOOL:$<TARGET_PROPERTY:DM_TEST_CODE>>>>:-Og;-fsanitize=undefined;-fsanitize-undefined-trap-on-error>)
elseif(DM_SANITIZE)
    target_compile_options(dm_options INTERFACE
        $<$<COMPILE_LANGUAGE:CXX>:-fsanitize=${DM_SANITIZE};-fno-sanitize-recover=all;-fno-omit-frame-pointer;$<$<CONFIG:Debug>:-Og>>)
    # These two checks take a quarter of the time of compiling test code, and a null pointer that test code
    # follows ends the program without them too.
    target_compile_options(dm_options INTERFACE
        $<$<AND:$<COMPILE_LANGUAGE:CXX>,$<BOOL:$<TARGET_PROPERTY:DM_TEST_CODE>>>:-fno-sanitize=null,alignment>)
    target_link_options(dm_options INTERFACE -fsanitize=${DM_SANITIZE})
    # The address sanitizer does not see an index that is too large inside an object, such as that of a
    # member of type std::array.
    target_compile_definitions(dm_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:_GLIBCXX_ASSERTIONS>)
endif()

if(DM_FUZZ)
    # Coverage feedback for the fuzzer in the code that it runs; its own main only where it is linked.
    target_compile_options(dm_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-fsanitize=fuzzer-no-link>)
endif()

if(DM_COVERAGE)
    target_compile_options(dm_options INTERFACE
        $<$<COMPILE_LANGUAGE:CXX>:--coverage;-fprofile-update=atomic>)
    target_link_options(dm_options INTERFACE --coverage)
endif()
