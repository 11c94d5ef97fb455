# The program that README.md shows is the example of that name, to the letter: -D README=... -D PROGRAM=...
file(READ "${README}" readme)
file(READ "${PROGRAM}" program)
string(FIND "${readme}" "```cpp\n${program}```" place)
if(place EQUAL -1)
  message(FATAL_ERROR "README.md shows another program than ${PROGRAM}")
endif()
