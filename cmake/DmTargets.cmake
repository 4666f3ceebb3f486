# dm_library(NAME [PORTABLE file...] [FAKED file...] [WINDOWS file...] [LINK target...])
#
# One static library per source folder. Its own folder is its include root, and it sees only the
# roots of what it links: a layer that includes upwards does not compile. PORTABLE sources include
# no Windows header. FAKED sources call only Windows functions that tests/fake_windows has: a native
# build compiles them on this fake, for the sanitizers. KERNEL is an older word for FAKED. WINDOWS
# sources are compiled only for Windows.
function(dm_library name)
    cmake_parse_arguments(ARG "" "" "PORTABLE;FAKED;KERNEL;WINDOWS;LINK" ${ARGN})
    list(APPEND ARG_FAKED ${ARG_KERNEL})
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
            set_target_properties(${name} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 12)
        endif()
    else()
        add_library(${name} INTERFACE)
        target_include_directories(${name} INTERFACE ${CMAKE_CURRENT_SOURCE_DIR})
        target_link_libraries(${name} INTERFACE ${ARG_LINK})
    endif()
endfunction()

# dm_quick_to_compile(TARGET): for what is only tested with, never handed out or measured. Its sources
# are compiled together and without optimisation.
function(dm_quick_to_compile name)
    target_compile_options(${name} PRIVATE -O0)
endfunction()

# dm_unit_test(NAME [THREADS] [LONG] [SECONDS n] [PORTABLE file...] [WINDOWS file...] LINK target...
#              [PROGRAMS target...] [LOCK resource...])
#
# One test program and one ctest entry for a source folder; PORTABLE tests also run natively. Under Wine a process start costs more
# than most cases. LOCK names what of the machine the cases share (rot, services, registry,
# firewall: the service that a DaemonManager waits for). THREADS: the program has several, so that the
# thread sanitizer is asked about it.
function(dm_unit_test name)
    cmake_parse_arguments(ARG "THREADS" "" "PORTABLE;WINDOWS;LINK;LOCK" ${ARGN})
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
        RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests/bin)
    if(ARG_THREADS)
        add_dependencies(programs_with_threads ${name})
    endif()
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT 600)
    if(ARG_LOCK AND NOT CMAKE_CROSSCOMPILING)
        set_tests_properties(${name} PROPERTIES RESOURCE_LOCK "${ARG_LOCK}")
    endif()
    if(WIN32)
        set_tests_properties(${name} PROPERTIES FIXTURES_REQUIRED wine_prefix)
    endif()
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
