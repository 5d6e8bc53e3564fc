#pragma once  // internal

#include "TorvelPlatform/foundation/Outcome.h"
#include "TorvelPlatform/foundation/PropertyList.h"

#include <string_view>
#include <vector>

namespace torvel {

// Reads the old text form of a UTF-8 text:
//   { key = value; }   ( a, b )   "quoted" or 'quoted'   <0fbd77 1c>   unquoted   // and /* comments */
// and the form of strings files, a dictionary without braces, where "key;" means "key = key;". A text of
// white space and comments alone is an empty dictionary. All scalars are strings. Of equal keys the last
// counts. Escapes: \" \' \\ \a \b \f \n \r \t \v, \U and four hex digits (a UTF-16 unit), and \ with up to
// three octal digits (a Unicode scalar below 256).
Outcome<PropertyList, PropertyListError> parseOldStylePropertyList(std::string_view text,
                                                                   std::vector<PropertyListKey>* rootKeys);

}  // namespace torvel
