#pragma once

#include "TorvelLibrary/Data/Remote/Networking/NetworkDispatcher.h"

namespace torvel {

// The client that hosts use: the pipeline with all its defaults. Has no state; make one wherever needed. Any
// thread.
class TorvelNetworkClient : public NetworkDispatcher {};

}  // namespace torvel
