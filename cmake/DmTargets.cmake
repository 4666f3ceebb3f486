# dm_library(NAME [PORTABLE file...] [FAKED file...] [WINDOWS file...] [LINK target...])
#
# One static library per source folder. Its own folder is its include root, and it sees only the
# roots of what it links: a layer that includes upwards does not compile. PORTABLE sources include
# no Windows header. FAKED sources call only Windows functions that tests/fake_windows has: a native
# build compiles them on this fake, for the sanitizers. WINDOWS sources are compiled only for Windows.
function(dm_library name)
    cmake_parse_arguments(ARG "" "" "PORTABLE;FAKED;WINDOWS;LINK" ${ARGN})
    set(sources ${ARG_PORTABLE} ${ARG_FAKED})
    if(WIN32)
        list(APPEND sources ${ARG_WINDOWS})
    elseif(ARG_FAKED)
        list(APPEND ARG_LINK fake_windows)
    endif()
    if(sources)
        add_library(${name} STATIC ${sources})
        target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
        target_link_libraries(${name} PUBLIC ${ARG_LINK} PRIVATE dm_options)
        if(DM_UNITY)
            set_target_properties(${name} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 0)
        endif()
    else()
        add_library(${name} INTERFACE)
        target_include_directories(${name} INTERFACE ${CMAKE_CURRENT_SOURCE_DIR})
        target_link_libraries(${name} INTERFACE ${ARG_LINK})
    endif()
endfunction()

# dm_quick_to_compile(TARGET): for what is only tested with, never handed out or measured. Its sources
# are compiled together. -Og compiles as quickly as -O0, and GNU ld links its objects in a third of the time,
# because they have a third of the sections.
function(dm_quick_to_compile name)
    set_target_properties(${name} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 12 DM_TEST_CODE ON)
    # GCC takes a source that another one includes for a header, and warns of its unnamed namespaces.
    target_compile_options(${name} PRIVATE -Og
        $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-subobject-linkage>)
endfunction()

# dm_unit_test(NAME [THREADS] [LONG] [SECONDS n] [PORTABLE file...] [WINDOWS file...] LINK target...
#              [PROGRAMS target...] [ABOUT target...] [LOCK resource...])
#
# One test program and one ctest entry for a source folder: under Wine a process start costs more than
# most cases. PORTABLE tests also run natively.
# PROGRAMS  the programs that the cases start, other than those of tests/programs.
# ABOUT     those of PROGRAMS whose behaviour the cases look at; without it: all. A plain ./test does not
#           repeat a program that passed if only others of its PROGRAMS have changed since.
# LOCK      what the machine has once and the cases use: rot (the table of running objects), registry,
#           services, firewall (the service for which a DaemonManager waits). On a real machine ctest
#           runs one program of a lock at a time. Under Wine each program has a prefix for itself.
# THREADS   the program has several threads: the preset native-tsan builds it.
# LONG      a plain ./test neither builds nor runs the program: it mostly waits, for a minute or more, or it
#           tests the test kit. A plain ./test also leaves out a program of PORTABLE tests alone here,
#           because the preset native runs the same cases.
# SECONDS   how long the program takes; ctest starts those that take longest first.
# The folder's variable DM_WITHOUT_QUARTZ becomes the target property (see src/cpp_utils).
function(dm_unit_test name)
    cmake_parse_arguments(ARG "THREADS;LONG" "SECONDS" "PORTABLE;WINDOWS;LINK;PROGRAMS;ABOUT;LOCK" ${ARGN})
    if(DM_SANITIZE STREQUAL "thread" AND NOT ARG_THREADS)
        return()
    endif()
    set(sources ${ARG_PORTABLE})
    if(WIN32)
        list(APPEND sources ${ARG_WINDOWS})
    endif()
    if(NOT sources)
        return()
    endif()
    add_executable(${name} ${sources})
    target_link_libraries(${name} PRIVATE ${ARG_LINK} test_support GTest::gmock_main dm_options)
    # GCC 12 warns wrongly where string literals are inlined (its bug 105329).
    target_compile_options(${name} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds;-Wno-restrict;-Wno-stringop-overread;-Wno-stringop-overflow>)
    target_precompile_headers(${name} REUSE_FROM test_support)
    dm_quick_to_compile(${name})
    set_target_properties(${name} PROPERTIES
        RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests/bin
        DM_WITHOUT_QUARTZ "${DM_WITHOUT_QUARTZ}")
    if(ARG_THREADS)
        add_dependencies(programs_with_threads ${name})
    endif()
    add_test(NAME ${name} COMMAND ${name})
    # The files on which the result depends: tools/testrun does not run a program again while they are
    # the same.
    set(files $<TARGET_FILE:${name}>)
    if(WIN32)
        get_property(child_programs GLOBAL PROPERTY DM_CHILD_PROGRAMS)
        foreach(program ${child_programs} ${ARG_PROGRAMS})
            add_dependencies(${name} ${program})
            list(APPEND files $<TARGET_FILE:${program}>)
        endforeach()
        set_tests_properties(${name} PROPERTIES FIXTURES_REQUIRED wine_prefix)
    endif()
    set_tests_properties(${name} PROPERTIES TIMEOUT 600 REQUIRED_FILES "${files}")
    if(ARG_LOCK AND NOT CMAKE_CROSSCOMPILING)
        set_tests_properties(${name} PROPERTIES RESOURCE_LOCK "${ARG_LOCK}")
    endif()
    dm_label_test(${name} LOCK ${ARG_LOCK})
    if(ARG_LONG)
        set_property(TEST ${name} APPEND PROPERTY LABELS long)
    elseif(WIN32 AND NOT ARG_WINDOWS)
        set_property(TEST ${name} APPEND PROPERTY LABELS portable)
    else()
        add_dependencies(quick_tests ${name})
    endif()
    foreach(program ${ARG_ABOUT})
        set_property(TEST ${name} APPEND PROPERTY LABELS about-${program})
    endforeach()
    if(ARG_SECONDS)
        set_tests_properties(${name} PROPERTIES COST ${ARG_SECONDS})
    endif()
endfunction()

# dm_label_test(NAME LOCK resource...): notes the locks of a test as labels, lock-rot and so on. The test kit
# (tests/kit) reads them there: under Wine the locks themselves are not set.
function(dm_label_test name)
    cmake_parse_arguments(ARG "" "" "LOCK" ${ARGN})
    foreach(lock ${ARG_LOCK})
        set_property(TEST ${name} APPEND PROPERTY LABELS lock-${lock})
    endforeach()
endfunction()

# dm_header_library(TARGET FOLDER): a header-only library from a Debian package, as an interface
# target. Only its own folder is linked into the build tree: the system's include folder as a whole
# would shadow the cross compiler's headers.
function(dm_header_library target folder)
    find_path(${target}_ROOT ${folder} PATHS /usr/include NO_DEFAULT_PATH REQUIRED
        NO_CMAKE_FIND_ROOT_PATH)
    set(link_root ${CMAKE_BINARY_DIR}/header_libraries/${target})
    file(MAKE_DIRECTORY ${link_root})
    file(CREATE_LINK ${${target}_ROOT}/${folder} ${link_root}/${folder} SYMBOLIC)
    add_library(${target} INTERFACE)
    target_include_directories(${target} SYSTEM INTERFACE ${link_root})
endfunction()

# dm_manifest(TARGET): gives a program a manifest. Windows then reads none that lies beside the program:
# that one could name libraries that are loaded from there in place of Windows' own, before main.
function(dm_manifest target)
    target_sources(${target} PRIVATE ${CMAKE_SOURCE_DIR}/cmake/program.rc)
endfunction()

# dm_version_resource(TARGET DESCRIPTION): what Windows shows as the file's version and description.
function(dm_version_resource target description)
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "EXECUTABLE")
        set(DM_FILE_TYPE VFT_APP)
        set(DM_FILE_NAME ${target}.exe)
    else()
        set(DM_FILE_TYPE VFT_DLL)
        set(DM_FILE_NAME ${target}.dll)
    endif()
    set(DM_FILE_DESCRIPTION ${description})
    configure_file(${CMAKE_SOURCE_DIR}/cmake/version.rc.in
        ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc @ONLY)
    target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
endfunction()
