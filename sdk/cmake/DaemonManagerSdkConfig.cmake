# DaemonManagerSdk::client, the client library of the DaemonManager supervisor.
#
#   find_package(DaemonManagerSdk 1.0 REQUIRED)
#   target_link_libraries(worker PRIVATE DaemonManagerSdk::client)
#
# The library is built from source as a part of the project that finds it, with the compiler, the
# run-time library and the settings of that project.
if(NOT WIN32)
    set(DaemonManagerSdk_FOUND FALSE)
    set(DaemonManagerSdk_NOT_FOUND_MESSAGE "The supervisor and its clients are Windows programs")
    return()
endif()

if(NOT TARGET DaemonManagerSdk::client)
    get_filename_component(_DaemonManagerSdk_root "${CMAKE_CURRENT_LIST_DIR}/.." ABSOLUTE)
    add_library(daemon_manager_client STATIC EXCLUDE_FROM_ALL
        "${_DaemonManagerSdk_root}/src/AnswererIdentity.cpp"
        "${_DaemonManagerSdk_root}/src/ArgumentRules.cpp"
        "${_DaemonManagerSdk_root}/src/SupervisorClient.cpp"
        "${_DaemonManagerSdk_root}/src/SupervisorIdentity.cpp")
    target_compile_features(daemon_manager_client PUBLIC cxx_std_17)
    target_include_directories(daemon_manager_client SYSTEM PUBLIC
        "${_DaemonManagerSdk_root}/include")
    target_compile_definitions(daemon_manager_client PRIVATE NOMINMAX WIN32_LEAN_AND_MEAN)
    target_link_libraries(daemon_manager_client PUBLIC advapi32 ole32 oleaut32)
    add_library(DaemonManagerSdk::client ALIAS daemon_manager_client)
    unset(_DaemonManagerSdk_root)
endif()
