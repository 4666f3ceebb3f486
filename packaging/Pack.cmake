# CPack's "External" step: what was installed into the staging folder becomes the packages. They lie
# above CPack's own folder, which also holds what CPack says about itself.
execute_process(
    COMMAND ${CPACK_DM_PYTHON} ${CPACK_DM_SOURCE}/packaging/make_packages.py
        --source ${CPACK_DM_SOURCE}
        --staging ${CPACK_TEMPORARY_DIRECTORY}
        --output ${CPACK_PACKAGE_DIRECTORY}/..
        --name ${CPACK_PACKAGE_FILE_NAME}
        --version ${CPACK_PACKAGE_VERSION}
        --strip ${CPACK_DM_STRIP}
        --makensis ${CPACK_DM_MAKENSIS}
    COMMAND_ERROR_IS_FATAL ANY)
