# Fails when a header of HEADER_LIST (one path a line) does not open with a `//` comment: the
# statement of its purpose, which the API reference shows as the header's description.
file(STRINGS ${HEADER_LIST} headers)
set(missing)
foreach(header ${headers})
  file(STRINGS ${header} first_line LIMIT_COUNT 1)
  if(NOT first_line MATCHES "^// [^ ]")
    list(APPEND missing ${header})
  endif()
endforeach()
if(missing)
  list(JOIN missing "\n  " missing)
  message(FATAL_ERROR "These installed headers do not open with a comment saying what they are for:\n  ${missing}")
endif()
