# Creates programs from the samples in the README and in the guide.
#
# quillet_read_samples(document language result): the contents of the document's code blocks in that language, joined.
function(quillet_read_samples document language result)
  file(READ ${document} rest)
  set(samples "")
  set(opening "\n```${language}\n")
  string(LENGTH "${opening}" opening_length)
  while(TRUE)
    string(FIND "${rest}" "${opening}" start)
    if(start EQUAL -1)
      break()
    endif()
    math(EXPR start "${start} + ${opening_length}")
    string(SUBSTRING "${rest}" ${start} -1 rest)
    string(FIND "${rest}" "\n```\n" end)
    math(EXPR end "${end} + 1")
    string(SUBSTRING "${rest}" 0 ${end} sample)
    string(SUBSTRING "${rest}" ${end} -1 rest)
    string(APPEND samples "${sample}")
  endwhile()
  set(${result} "${samples}" PARENT_SCOPE)
endfunction()

# quillet_write_guide_program(document folder): writes folder/guide.cpp and, with its expected output, folder/guide.txt.
function(quillet_write_guide_program document folder)
  quillet_read_samples(${document} "c++" frame)
  quillet_read_samples(${document} "cpp" body)
  quillet_read_samples(${document} "text" output)
  file(WRITE ${folder}/guide.cpp "${frame}\nint main() {\n${body}}\n")
  file(WRITE ${folder}/guide.txt "${output}")
endfunction()

# quillet_write_readme_program(document folder): writes folder/first.cpp.
function(quillet_write_readme_program document folder)
  quillet_read_samples(${document} "cpp" program)
  file(WRITE ${folder}/first.cpp "${program}")
endfunction()
