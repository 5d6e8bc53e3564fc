#pragma once

#include <span>

namespace torvel {

// A function of a library that is loaded when it is first needed, and the pointer that calls it.
struct RuntimeFunction {
    const char* name;  // as the library exports it
    void* pointer;     // of the function's type, where its address goes
};

// For a list of such functions: what a header declares, a source defines and a table for `loadFunctions`
// holds. They stand in this namespace under their own names, so that code here calls them as if they were
// linked.
#define TORVEL_DECLARE_FUNCTION(name) [[gnu::visibility("hidden")]] extern decltype(&::name) name;
#define TORVEL_DEFINE_FUNCTION(name) decltype(&::name) name = nullptr;
#define TORVEL_RUNTIME_FUNCTION(name) RuntimeFunction{#name, &name},

// Loads the library for ever and sets the pointers. Stops the process when it or one of its functions is
// missing, as the system does for a library that was linked.
void loadFunctions(const char* library, std::span<const RuntimeFunction> functions);

}  // namespace torvel
