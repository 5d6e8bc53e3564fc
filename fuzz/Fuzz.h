#pragma once

#include <string_view>

// What each target defines: takes bytes that nobody vouches for, and must survive them. A stop through
// torvel::fatalError counts as survived.
void fuzz(std::string_view bytes);

// Ends the process, as a crash would, when something that must hold does not.
void mustHold(bool condition);
