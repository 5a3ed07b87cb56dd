# Options that every target of this project takes on, and none of its consumers.
add_library(quenlis_options INTERFACE)
target_compile_features(quenlis_options INTERFACE cxx_std_17 c_std_11)
target_compile_options(quenlis_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual>
  $<$<BOOL:${QUENLIS_WARNINGS_AS_ERRORS}>:-Werror>)
if(QUENLIS_SANITIZE)
  target_compile_options(quenlis_options INTERFACE -fsanitize=${QUENLIS_SANITIZE}
    -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(quenlis_options INTERFACE -fsanitize=${QUENLIS_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
    # A host in C carries clang's sanitizer runtime for the library, which is C++.
    target_link_options(quenlis_options INTERFACE $<$<LINK_LANGUAGE:C>:-fsanitize-link-c++-runtime>)
    target_link_libraries(quenlis_options INTERFACE $<$<LINK_LANGUAGE:C>:stdc++>)
  endif()
endif()

# The arithmetic of the engine: every value is rounded where the source says so, on every instruction set.
# The two -fno flags change no value; they let square roots and clamps become vector code.
add_library(quenlis_arithmetic INTERFACE)
target_compile_options(quenlis_arithmetic INTERFACE -ffp-contract=off -fno-math-errno -fno-trapping-math)
