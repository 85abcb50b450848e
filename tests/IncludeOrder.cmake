# SPDX-License-Identifier: Apache-2.0
# Runs scripts/check-includes on the tree, and on a small one with violations that it must find.
# SOURCE: the tree. WORK: a directory for the small one.
set(tree "${WORK}/include-order")

function(expect status output)
  execute_process(COMMAND "${SOURCE}/scripts/check-includes" ${ARGN} RESULT_VARIABLE result
                  OUTPUT_VARIABLE printed ERROR_VARIABLE printed)
  if(NOT result EQUAL status OR NOT printed STREQUAL output)
    message(FATAL_ERROR "check-includes ${ARGN}: ${result} instead of ${status}\n${printed}")
  endif()
endfunction()

expect(0 "" "${SOURCE}")

file(REMOVE_RECURSE "${tree}")
file(WRITE "${tree}/src/layers.txt" "# comment\nlow Low\n\nhigh High\nexcept include/veskar/Low.h <veskar/High.h>\n")
file(WRITE "${tree}/src/low/A.cpp" "#include \"low/A.h\"\n#include <veskar/Low.h>\n#include <vector>\n")
file(WRITE "${tree}/src/high/B.cpp" "#include <veskar/Export.h>\n#include \"low/A.h\"\n")
file(WRITE "${tree}/include/veskar/Low.h" "#include <veskar/High.h>\n")
file(WRITE "${tree}/host/layers.txt" "base Base\ntop Top\n")
file(WRITE "${tree}/host/top/A.cpp" "#include <veskar-host/ExportHost.h>\n#include \"host/base/A.h\"\n#include <veskar/High.h>\n")
file(WRITE "${tree}/include/veskar-host/Top.h" "#include <veskar-host/Base.h>\n")
expect(0 "" "${tree}")

file(WRITE "${tree}/src/low/C.cpp" "#include \"high/B.h\"\n")
file(WRITE "${tree}/src/low/D.h" "#include <veskar/High.h>\n")
file(WRITE "${tree}/src/other/E.cpp" "#include \"low/A.h\"\n")
file(WRITE "${tree}/host/base/B.h" "#include <veskar-host/Top.h>\n")
file(WRITE "${tree}/host/base/C.cpp" "#include \"host/top/A.h\"\n")
file(WRITE "${tree}/src/high/F.cpp" "#include <veskar/Other.h>\n")
expect(1 "\
src/high/F.cpp: includes <veskar/Other.h>, which has no place in src/layers.txt
src/low/C.cpp: low includes \"high/B.h\" of the higher high
src/low/D.h: low includes <veskar/High.h> of the higher high
src/other/E.cpp: has no place in src/layers.txt
host/base/B.h: base includes <veskar-host/Top.h> of the higher top
host/base/C.cpp: base includes \"host/top/A.h\" of the higher top
" "${tree}")
