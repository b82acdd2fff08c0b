# Writes OUTPUT, a C++ source, from the texts of FILES (with | between them): see EmbedText.cmake.
string(REPLACE "|" ";" files "${FILES}")
set(texts)
set(rows)
set(number 0)
foreach(file IN LISTS files)
  file(READ "${file}" text)
  get_filename_component(file_name "${file}" NAME)
  string(APPEND texts "static const char text${number}[] = R\"page(${text})page\";\n")
  string(APPEND rows "    {\"${file_name}\", text${number}, sizeof text${number} - 1},\n")
  math(EXPR number "${number} + 1")
endforeach()
file(WRITE "${OUTPUT}"
  "#include \"apps/micro800/serve/routes/page_files.h\"\n${texts}const PageFile kPageFiles[] = {\n${rows}    {nullptr, nullptr, 0}};\n")
