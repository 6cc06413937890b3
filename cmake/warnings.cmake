# The presets make warnings errors; who packages or embeds the project may have a compiler that
# warns of more. The one exception is the look-up that the library uses on purpose and that the
# platform marks as deprecated: it only warns on a device, too.
add_compile_options(-Wall -Wextra -Wno-error=deprecated-declarations)

# With clang and libc++ the locks are checked at compile time: libc++'s mutex carries the
# attributes that the analysis needs, libstdc++'s does not.
option(QUORVEL_LIBCXX "Build with clang against libc++, with thread-safety analysis" OFF)
if(QUORVEL_LIBCXX)
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-stdlib=libc++>)
  add_link_options(-stdlib=libc++)
  add_compile_definitions($<$<COMPILE_LANGUAGE:CXX>:_LIBCPP_ENABLE_THREAD_SAFETY_ANNOTATIONS>)
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Werror=thread-safety>)
endif()
