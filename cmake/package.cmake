# cpack: one archive for each component.
set(CPACK_PACKAGE_NAME vidproc)
set(CPACK_PACKAGE_VENDOR "the vidproc authors")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_GENERATOR TGZ)
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
include(CPack)
