# Renders icons and writes them as C arrays:
#   cmake -DRSVG=<rsvg-convert> -DOUT=<file.cpp> -DWORK=<folder> -DICONS=<file.svg@size|...>
#         -P EmbedIcons.cmake
# The result defines kIconFiles of ui/fltk/Icons.h.
file(MAKE_DIRECTORY "${WORK}")
string(REPLACE "|" ";" icons "${ICONS}")
set(arrays "")
set(entries "")
foreach(icon IN LISTS icons)
  string(REGEX MATCH "^(.*)@([0-9]+)$" _ "${icon}")
  set(svg "${CMAKE_MATCH_1}")
  set(size "${CMAKE_MATCH_2}")
  get_filename_component(name "${svg}" NAME_WE)
  set(png "${WORK}/${name}_${size}.png")
  execute_process(COMMAND "${RSVG}" -w ${size} -h ${size} -o "${png}" "${svg}"
                  RESULT_VARIABLE failed)
  if(failed)
    message(FATAL_ERROR "${svg} could not be rendered")
  endif()
  file(READ "${png}" hex HEX)
  string(REGEX REPLACE "(..)" "0x\\1," bytes "${hex}")
  string(REGEX REPLACE "(................................................................................)" "\\1\n" bytes "${bytes}")
  string(APPEND arrays "const unsigned char k_${name}_${size}[] = {\n${bytes}};\n")
  string(APPEND entries "    {\"${name}\", ${size}, k_${name}_${size}, sizeof k_${name}_${size}},\n")
endforeach()
list(LENGTH icons count)
file(WRITE "${OUT}" "#include \"ui/fltk/IconFiles.h\"\n\nnamespace {\n${arrays}}  // namespace\n\nconst IconFile kIconFiles[] = {\n${entries}};\nconst std::size_t kIconFileCount = ${count};\n")
