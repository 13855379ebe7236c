# The package of Postmarker for hosts. After find_package(Postmarker):
#   Postmarker::x86_64, Postmarker::i686   the module of each width, with its import library and headers
#   Postmarker::Postmarker                 the one of the width that is being built
#   Postmarker_SUITE_FOLDER                where the runnable tree of that width lies: bin, Spamfilter, res

get_filename_component(Postmarker_ROOT_FOLDER "${CMAKE_CURRENT_LIST_DIR}/../../.." ABSOLUTE)

foreach(_postmarker_width x86_64 i686)
  if(NOT TARGET Postmarker::${_postmarker_width})
    add_library(Postmarker::${_postmarker_width} SHARED IMPORTED)
    set_target_properties(Postmarker::${_postmarker_width} PROPERTIES
      IMPORTED_LOCATION ${Postmarker_ROOT_FOLDER}/${_postmarker_width}/Spamfilter/Postmarker.dll
      IMPORTED_IMPLIB ${Postmarker_ROOT_FOLDER}/${_postmarker_width}/lib/libPostmarker.dll.a
      INTERFACE_INCLUDE_DIRECTORIES ${Postmarker_ROOT_FOLDER}/include
      INTERFACE_COMPILE_FEATURES cxx_std_20)
  endif()
endforeach()

if(CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(_postmarker_width x86_64)
else()
  set(_postmarker_width i686)
endif()
set(Postmarker_SUITE_FOLDER ${Postmarker_ROOT_FOLDER}/${_postmarker_width})
if(NOT TARGET Postmarker::Postmarker)
  add_library(Postmarker::Postmarker ALIAS Postmarker::${_postmarker_width})
endif()
unset(_postmarker_width)
