# Warnings are an error budget of zero for our own code; Qt's headers come in
# as system headers through the imported targets and stay out of it.
function(veltrako_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
endfunction()
