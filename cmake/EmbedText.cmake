# embed_text(TARGET FILE NAME): compiles a text file in, as `const char NAME[]`, ended by a zero. One source
# for what a person reads as a page and what a program says.
function(embed_text target file name)
  set(output "${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp")
  add_custom_command(
    OUTPUT "${output}"
    COMMAND "${CMAKE_COMMAND}" "-DINPUT=${file}" "-DOUTPUT=${output}" "-DNAME=${name}"
            -P "${PROJECT_SOURCE_DIR}/cmake/embed_text_script.cmake"
    DEPENDS "${file}" "${PROJECT_SOURCE_DIR}/cmake/embed_text_script.cmake"
    VERBATIM)
  target_sources(${target} PRIVATE "${output}")
endfunction()

# embed_files(TARGET NAME FILE...): compiles text files in as `const PageFile NAME[]`
# (apps/micro800/serve/routes/page_files.h), ended by one without a name.
function(embed_files target name)
  set(output "${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp")
  string(REPLACE ";" "|" files "${ARGN}")
  add_custom_command(
    OUTPUT "${output}"
    COMMAND "${CMAKE_COMMAND}" "-DFILES=${files}" "-DOUTPUT=${output}" "-DNAME=${name}"
            -P "${PROJECT_SOURCE_DIR}/cmake/embed_files_script.cmake"
    DEPENDS ${ARGN} "${PROJECT_SOURCE_DIR}/cmake/embed_files_script.cmake"
    VERBATIM)
  target_sources(${target} PRIVATE "${output}")
endfunction()
