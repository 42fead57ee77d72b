# install() rules and the exported CMake package: an application does find_package(Lumex) and links
# Lumex::LumexCore (and on Windows may name Lumex::LumexCoreD3D12 for the Direct3D 12 classes).
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

foreach(_dir IN LISTS LUMEX_HEADER_DIRS)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/${_dir}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/Lumex/${_dir}
    FILES_MATCHING PATTERN "*.h" PATTERN "*.inl")
endforeach()
if(EXISTS ${PROJECT_BINARY_DIR}/generated)
  install(DIRECTORY ${PROJECT_BINARY_DIR}/generated/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/Lumex
    FILES_MATCHING PATTERN "*.h" PATTERN "*.hpp")
endif()

if(WIN32)
  install(TARGETS LumexCoreD3D12 LumexCore EXPORT LumexTargets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install(FILES ${PROJECT_SOURCE_DIR}/LumexCore/LxAppAllocator.cpp DESTINATION share/Lumex)
else()
  install(TARGETS LumexCore EXPORT LumexTargets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
endif()

install(EXPORT LumexTargets NAMESPACE Lumex:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Lumex)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/LumexConfig.cmake.in
  ${PROJECT_BINARY_DIR}/LumexConfig.cmake INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Lumex)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/LumexConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/LumexConfig.cmake ${PROJECT_BINARY_DIR}/LumexConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Lumex)
