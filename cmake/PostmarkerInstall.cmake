# What `cmake --install` lays out: one width's half of the package that scripts/package makes. The halves share the
# headers and the package file; everything else lies in a folder of the width's name, laid out as the suite installs it.

include(CMakePackageConfigHelpers)

if(CMAKE_SYSTEM_PROCESSOR STREQUAL x86)
  set(width i686)
else()
  set(width x86_64)
endif()
set(import_library ${CMAKE_BINARY_DIR}/package/libPostmarker.dll.a)

# The linker's own import library names the 32-bit export without the decoration that a caller's object file asks for.
add_custom_command(
  OUTPUT ${import_library}
  COMMAND ${CMAKE_COMMAND}
    -DMODULE=$<TARGET_FILE:Postmarker>
    -DDEFINITIONS=${CMAKE_SOURCE_DIR}/src/wizard/Postmarker.def
    -DLIBRARY=${import_library}
    -DNM=${CMAKE_NM}
    -DDLLTOOL=${CMAKE_DLLTOOL}
    -P ${CMAKE_SOURCE_DIR}/cmake/MakeImportLibrary.cmake
  DEPENDS
    Postmarker ${CMAKE_SOURCE_DIR}/src/wizard/Postmarker.def ${CMAKE_SOURCE_DIR}/cmake/MakeImportLibrary.cmake
  COMMENT "Making the import library"
  VERBATIM)
add_custom_target(pm_import_library ALL DEPENDS ${import_library})

install(TARGETS Postmarker RUNTIME DESTINATION ${width}/Spamfilter)
install(TARGETS postmarker-host RUNTIME DESTINATION ${width}/bin)
install(FILES ${import_library} DESTINATION ${width}/lib)
get_property(resource_targets DIRECTORY ${CMAKE_SOURCE_DIR}/resources PROPERTY BUILDSYSTEM_TARGETS)
foreach(target IN LISTS resource_targets)
  if(target MATCHES "^pm_res_([a-z][a-z])$")
    install(TARGETS ${target} LIBRARY DESTINATION ${width}/res/${CMAKE_MATCH_1})
  endif()
endforeach()

install(DIRECTORY ${CMAKE_SOURCE_DIR}/include/postmarker DESTINATION include FILES_MATCHING PATTERN "*.h")
install(FILES ${CMAKE_SOURCE_DIR}/docs/hosting.md DESTINATION .)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/package/PostmarkerConfigVersion.cmake
  COMPATIBILITY SameMajorVersion ARCH_INDEPENDENT)
install(FILES
  ${CMAKE_SOURCE_DIR}/cmake/PostmarkerConfig.cmake ${CMAKE_BINARY_DIR}/package/PostmarkerConfigVersion.cmake
  DESTINATION lib/cmake/Postmarker)
