# Compiler settings shared by every target of the project.
add_compile_options(-Wall -Wextra -Werror)

if(TR104_SANITIZE)
  add_compile_options(-fsanitize=${TR104_SANITIZE} -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TR104_SANITIZE})
endif()

# The library itself: no exceptions, no RTTI, everything hidden unless marked TR104_API.
# The version script additionally keeps any C++ symbol (instantiated templates of the
# standard headers carry default visibility) out of the dynamic symbol table.
function(tr104_library_settings target)
  target_compile_options(${target} PRIVATE
    $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti -fvisibility-inlines-hidden>
    -fvisibility=hidden)
  target_compile_definitions(${target} PRIVATE TR104_BUILDING_LIBRARY=1)
endfunction()
