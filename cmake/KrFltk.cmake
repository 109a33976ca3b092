# The target kr_fltk: FLTK 1.3 with its images library.
#
# For Windows FLTK_DIR names the folder of a built one: where its install step put it, or what holds
# FLTKConfig.cmake. A native build finds one by itself (vcpkg). Without one the interface is compiled,
# not linked, and KR_UI_LINKS is off.
add_library(kr_fltk INTERFACE)
set(KR_UI_LINKS ON)
set(fltk_folder "")
if(FLTK_DIR)  # a search writes its own result there
  get_filename_component(fltk_folder "${FLTK_DIR}" ABSOLUTE BASE_DIR "${CMAKE_SOURCE_DIR}")
endif()

function(kr_fltk_library out)
  find_library(${out} NAMES ${ARGN} PATHS "${fltk_folder}" PATH_SUFFIXES lib REQUIRED
               NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
endfunction()

if(NOT WIN32)
  find_path(FLTK_HEADERS FL/Fl.H REQUIRED)
  find_library(FLTK_LIBRARY fltk REQUIRED)
  find_library(FLTK_IMAGES_LIBRARY fltk_images REQUIRED)
  target_link_libraries(kr_fltk INTERFACE "${FLTK_IMAGES_LIBRARY}" "${FLTK_LIBRARY}")
else()
  foreach(folder IN ITEMS "${fltk_folder}" "${fltk_folder}/CMake" "${fltk_folder}/share/fltk")
    if(EXISTS "${folder}/FLTKConfig.cmake" AND NOT FLTK_FOUND)
      find_package(FLTK CONFIG REQUIRED PATHS "${folder}" NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
    endif()
  endforeach()
  if(NOT fltk_folder AND NOT CMAKE_CROSSCOMPILING)
    find_package(FLTK CONFIG QUIET)
  endif()
  if(FLTK_FOUND AND TARGET fltk_images)
    set(FLTK_HEADERS "${FLTK_INCLUDE_DIRS}")
    target_link_libraries(kr_fltk INTERFACE fltk_images fltk)
  elseif(fltk_folder)
    find_path(FLTK_HEADERS FL/Fl.H PATHS "${fltk_folder}" PATH_SUFFIXES include REQUIRED
              NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
    kr_fltk_library(FLTK_IMAGES_LIBRARY fltk_images fltkimages)
    kr_fltk_library(FLTK_LIBRARY fltk)
    kr_fltk_library(PNG_LIBRARY fltk_png fltkpng png)
    kr_fltk_library(JPEG_LIBRARY fltk_jpeg fltkjpeg jpeg)
    kr_fltk_library(Z_LIBRARY fltk_z fltkzlib z)
    target_link_libraries(kr_fltk INTERFACE "${FLTK_IMAGES_LIBRARY}" "${FLTK_LIBRARY}"
                          "${PNG_LIBRARY}" "${JPEG_LIBRARY}" "${Z_LIBRARY}")
  else()
    # The headers of the build machine; a folder that holds only them keeps its other headers out of
    # the search path.
    set(KR_UI_LINKS OFF)
    message(STATUS "No FLTK for Windows (FLTK_DIR): the window program is compiled, not linked")
    find_path(FLTK_SYSTEM_HEADERS FL/Fl.H PATHS /usr/include REQUIRED
              NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
    set(FLTK_HEADERS "${CMAKE_BINARY_DIR}/fltk")
    file(MAKE_DIRECTORY "${FLTK_HEADERS}")
    file(CREATE_LINK "${FLTK_SYSTEM_HEADERS}/FL" "${FLTK_HEADERS}/FL" SYMBOLIC)
  endif()
  target_compile_definitions(kr_fltk INTERFACE WIN32)  # what FLTK's headers ask for
  target_link_libraries(kr_fltk INTERFACE gdi32 comctl32 comdlg32 ole32 uuid ws2_32 winspool)
endif()
target_include_directories(kr_fltk SYSTEM INTERFACE "${FLTK_HEADERS}")
