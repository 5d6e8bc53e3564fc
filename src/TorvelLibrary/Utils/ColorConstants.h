#pragma once

namespace torvel {

// A type name that hosts refer to; it has no members and does nothing. Any thread.
class ColorConstants {};

}  // namespace torvel
