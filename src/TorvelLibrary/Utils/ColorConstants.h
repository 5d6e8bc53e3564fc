#pragma once

namespace torvel {

// A type name that hosts refer to; it has no members and does nothing.
class ColorConstants {};

}  // namespace torvel
