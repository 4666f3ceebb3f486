# The packaging step of CPack's generator "External": makes the packages from the staging folder.
# They are written to the folder above CPack's own folder, which also holds other files of CPack.
execute_process(
    COMMAND ${CPACK_DM_PYTHON} ${CPACK_DM_SOURCE}/packaging/make_packages.py
        --source ${CPACK_DM_SOURCE}
        --staging ${CPACK_TEMPORARY_DIRECTORY}
        --output ${CPACK_PACKAGE_DIRECTORY}/..
        --name ${CPACK_PACKAGE_FILE_NAME}
        --version ${CPACK_PACKAGE_VERSION}
        --strip ${CPACK_DM_STRIP}
        --setup ${CPACK_DM_SETUP}
        "--sign=${CPACK_DM_SIGN}"
    COMMAND_ERROR_IS_FATAL ANY)
