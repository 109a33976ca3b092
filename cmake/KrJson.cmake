# The target kr_json: nlohmann-json, headers only.
add_library(kr_json INTERFACE)
find_path(JSON_HEADERS nlohmann/json.hpp REQUIRED NO_CMAKE_FIND_ROOT_PATH)
if(CMAKE_CROSSCOMPILING)
  # Those of the build machine; a folder that holds only them keeps its other headers out of the
  # search path.
  set(folder "${CMAKE_BINARY_DIR}/json")
  file(MAKE_DIRECTORY "${folder}")
  file(CREATE_LINK "${JSON_HEADERS}/nlohmann" "${folder}/nlohmann" SYMBOLIC)
  target_include_directories(kr_json SYSTEM INTERFACE "${folder}")
else()
  target_include_directories(kr_json SYSTEM INTERFACE "${JSON_HEADERS}")
endif()
