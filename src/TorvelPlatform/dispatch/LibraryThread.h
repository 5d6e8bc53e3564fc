#pragma once

#include <string_view>

namespace torvel {

// Makes the calling thread, which the library started, a good guest of its host: it takes none of the host's
// signals, so that handlers run on the host's own threads and a write into a connection that the peer closed
// is an error instead of SIGPIPE; and it has a name for debuggers, the label's part behind its last ".", cut
// to the 15 bytes that the system keeps.
void beginLibraryThread(std::string_view label);

}  // namespace torvel
