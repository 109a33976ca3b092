# Build rules shared by all rooms.

# kr_compile(<options>...): compiler options; the resource compiler takes none of them.
macro(kr_compile)
  add_compile_options("$<$<COMPILE_LANGUAGE:CXX>:${ARGV}>")
endmacro()

if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
  kr_compile(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # GCC 12 sees overlapping and overlong copies in optimised string operations where there are none.
  kr_compile(-Wno-restrict -Wno-array-bounds -Wno-stringop-overflow -Wno-stringop-overread)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  # Counted into -Wconversion by Clang, but not by GCC.
  kr_compile(-Wno-sign-conversion)
  kr_compile(-Wthread-safety)  # what util/signals/Mutex.h says of locks
endif()
if(MSVC)
  kr_compile(/W4 /permissive- /utf-8 /Zc:__cplusplus)
  # Both runtimes are meant to take the same calls.
  add_compile_definitions(_CRT_SECURE_NO_WARNINGS _CRT_NONSTDC_NO_WARNINGS)
endif()
if(WIN32)
  # Byte strings hold the system's code page, so the A functions are the ones that are meant.
  add_compile_definitions(WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0A00)
else()
  add_compile_definitions(_FILE_OFFSET_BITS=64)
endif()
if(KR_SANITIZE)
  add_compile_options(-fsanitize=${KR_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${KR_SANITIZE})
  # For tests that a sanitizer gets in the way of.
  if(KR_SANITIZE MATCHES "thread")
    add_compile_definitions(KR_THREAD_SANITIZER)
  else()
    add_compile_definitions(KR_ADDRESS_SANITIZER)
  endif()
endif()
if(KR_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# kr_sources(<out> <folder> [RECURSE]): the .cpp files of a folder, with RECURSE of its folders too,
# that belong to the system built for. Pairs end in _posix.cpp and _win32.cpp.
function(kr_sources out folder)
  if("RECURSE" IN_LIST ARGN)
    file(GLOB_RECURSE found CONFIGURE_DEPENDS "${folder}/*.cpp")
  else()
    file(GLOB found CONFIGURE_DEPENDS "${folder}/*.cpp")
  endif()
  if(WIN32)
    list(FILTER found EXCLUDE REGEX "_posix\\.cpp$")
  else()
    list(FILTER found EXCLUDE REGEX "_win32\\.cpp$")
  endif()
  set(${out} ${found} PARENT_SCOPE)
endfunction()

# kr_precompile(<target>): the headers that most files include, compiled once. Files still include
# what they use: the debug preset builds without this.
function(kr_precompile target)
  set(headers <algorithm> <chrono> <cstdint> <functional> <map> <memory> <mutex> <string> <vector>)
  if(target STREQUAL "kr_util")
    target_precompile_headers(kr_util PRIVATE ${headers})
  else()
    target_precompile_headers(${target} REUSE_FROM kr_util)
  endif()
endfunction()

# kr_room(<room> [rooms it may include...]): the static library kr_<room> of src/<room>.
function(kr_room room)
  kr_sources(sources "${CMAKE_SOURCE_DIR}/src/${room}" RECURSE)
  add_library(kr_${room} STATIC ${sources})
  kr_precompile(kr_${room})
  target_include_directories(kr_${room} PUBLIC "${CMAKE_SOURCE_DIR}/src")
  target_link_libraries(kr_${room} PUBLIC Threads::Threads)
  foreach(below IN LISTS ARGN)
    target_link_libraries(kr_${room} PUBLIC kr_${below})
  endforeach()
endfunction()

# kr_resources(<program> <description>): its icon, version and manifest, for Windows.
function(kr_resources target description)
  if(NOT WIN32)
    return()
  endif()
  set(folder "${CMAKE_SOURCE_DIR}/package/windows")
  set(icon "${folder}/kestrun.ico")
  set(manifest "${folder}/program.manifest")
  set(release "${PROJECT_VERSION_MAJOR} R${PROJECT_VERSION_MINOR}")
  set(resources "${CMAKE_CURRENT_BINARY_DIR}/${target}.rc")
  configure_file("${folder}/program.rc.in" "${resources}" @ONLY)
  set_source_files_properties("${resources}" PROPERTIES OBJECT_DEPENDS "${icon};${manifest}")
  target_sources(${target} PRIVATE "${resources}")
  if(MSVC)
    target_link_options(${target} PRIVATE /MANIFEST:NO)  # the resources have it
  endif()
endfunction()
