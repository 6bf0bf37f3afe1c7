# Text files that become part of the program.
#
# rebate_embed_text(target function file) adds to `target` a source that defines
# `std::string_view rebate::<function>()`, declared in model/account_script.h: the text of `file` as it is at build time.

if(CMAKE_SCRIPT_MODE_FILE)
  file(READ "${FROM}" text)
  string(FIND "${text}" ")embedded" ending)
  if(NOT ending EQUAL -1)
    message(FATAL_ERROR "${FROM} holds the mark that ends an embedded text")
  endif()
  file(WRITE "${TO}" "#include \"model/account_script.h\"

std::string_view rebate::${FUNCTION}() {
  return R\"embedded(${text})embedded\";
}
")
  return()
endif()

set(rebate_embed_script ${CMAKE_CURRENT_LIST_FILE})

function(rebate_embed_text target function file)
  set(source ${CMAKE_CURRENT_BINARY_DIR}/embedded/${function}.cpp)
  add_custom_command(
    OUTPUT ${source}
    COMMAND ${CMAKE_COMMAND} -DFROM=${CMAKE_CURRENT_SOURCE_DIR}/${file} -DTO=${source} -DFUNCTION=${function}
            -P ${rebate_embed_script}
    DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${file} ${rebate_embed_script}
    COMMENT "Embedding ${file}"
    VERBATIM)
  target_sources(${target} PRIVATE ${source})
endfunction()
