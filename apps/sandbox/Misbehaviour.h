#pragma once  // internal

#include "sandbox/Envelope.h"
#include "sandbox/HttpExchange.h"

#include <string>

namespace torvel::sandbox {

// What a misbehaviour has to work with. Sealing needs the key that came with the request (empty: none came).
struct Scene {
    const Call& call;
    Connection& connection;
    EnvelopeForm form;
    std::string keyText;
};

// The misbehaviour named by the path's rest, as Sandbox.h lists them; 404 for an unknown name. One that
// answers by hand ends the connection and returns a reply of status 0.
Reply misbehave(const std::string& name, const Scene& scene);

}  // namespace torvel::sandbox
