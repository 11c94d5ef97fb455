# The compiler only reads the sources, for the sake of its warnings. What would be made of them is an empty file, by
# which the build knows that it is done.
set(CMAKE_CXX_COMPILE_OBJECT "<CMAKE_CXX_COMPILER> <DEFINES> <INCLUDES> <FLAGS> -fsyntax-only <SOURCE>"
                             "${CMAKE_COMMAND} -E touch <OBJECT>")
set(CMAKE_CXX_CREATE_SHARED_LIBRARY "${CMAKE_COMMAND} -E touch <TARGET>")
set(CMAKE_CXX_CREATE_SHARED_MODULE "${CMAKE_CXX_CREATE_SHARED_LIBRARY}")
set(CMAKE_CXX_LINK_EXECUTABLE "${CMAKE_CXX_CREATE_SHARED_LIBRARY}")
