// What the content headers of an entity say about it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "analysis/message/HeaderMap.h"

namespace postmarker {

// One piece of a header value with parameters.
struct HeaderParameter {
  std::string_view key;    // case as it stands
  std::string_view value;  // without double quotes at its ends
};

// The parameter that one piece between semicolons gives: the first "=" or "/" in it parts key and
// value, and without one both are the whole piece.
HeaderParameter ReadParameter(std::string_view piece);

// Calls visit(HeaderParameter) for the pieces of `text`, cut at each ";" whether in quotes or not.
// Pieces between two ";" count where they are not empty, the last one always; an empty text has
// none.
template <class Visit>
void ForEachParameter(std::string_view text, Visit visit) {
  while (!text.empty()) {
    const size_t end = text.find(';');
    if (end > 0) {
      visit(ReadParameter(text.substr(0, end)));
    }
    if (end == std::string_view::npos) {
      return;
    }
    text.remove_prefix(end + 1);
    if (text.empty()) {
      visit(ReadParameter(text));
    }
  }
}

// The value of a parameter, the last one where it comes more than once. `key` is lower-case.
std::optional<std::string_view> FindParameter(std::string_view text, std::string_view key);

// Sets map[key] to the value for each parameter of `text`, keys in lower case.
void SplitParameters(std::string_view text, HeaderMap* map);

// True if "pdf" follows the last "." of a lower-case file name.
bool HasPdfExtension(std::string_view name);

// True if "jpg", "jpeg", "bmp" or "gif" follows the last "." of a lower-case file name.
bool HasImageExtension(std::string_view name);

// What an entity is.
struct ContentType {
  bool quotedPrintable = false;
  bool base64 = false;
  bool text = false;  // also where there is no content type
  bool html = false;  // text/html or text/richtext
  bool pdf = false;
  bool image = false;
  bool multipart = false;
  std::string type;      // lower-case type and subtype
  std::string partName;  // the "name" parameter
};

// Judges the content headers. It reads "content-type" and "content-transfer-encoding" as the index
// operator does, so both keys are in the map afterwards.
ContentType ReadContentType(HeaderMap* headers);

}  // namespace postmarker
