#include "analysis/message/ContentType.h"

#include <algorithm>
#include <array>

#include "support/Bytes.h"

namespace postmarker {
namespace {

// What follows the last dot of a name; nothing without a dot.
std::string_view Extension(std::string_view name) {
  const size_t dot = name.rfind('.');
  return dot == std::string_view::npos ? std::string_view() : name.substr(dot + 1);
}

bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

void JudgeName(std::string_view name, ContentType* type) {
  const std::string lower = LowerText(name);
  if (HasPdfExtension(lower)) {
    type->pdf = true;
  } else if (HasImageExtension(lower)) {
    type->image = true;
  }
}

// Neither text nor an image by its type: the type and the file names decide.
void JudgeAttachment(std::string_view contentType, const HeaderMap& headers, ContentType* type) {
  if (const auto subtype = FindParameter(contentType, "application")) {
    type->pdf = EqualNoCase(*subtype, "pdf");
  }
  if (const auto name = FindParameter(contentType, "name")) {
    JudgeName(*name, type);
  }
  if (const auto disposition = headers.Find("content-disposition")) {
    auto name = FindParameter(*disposition, "filename");
    if (!name) {
      name = FindParameter(*disposition, "name");
    }
    if (name && !name->empty()) {
      JudgeName(*name, type);
    }
  }
}

void JudgeKind(std::string_view contentType, const HeaderMap& headers, ContentType* type) {
  if (contentType.empty()) {
    type->text = true;
  } else if (const auto subtype = FindParameter(contentType, "text")) {
    type->text = true;
    type->html = EqualNoCase(*subtype, "html") || EqualNoCase(*subtype, "richtext");
  } else if (FindParameter(contentType, "image")) {
    type->image = true;
  } else {
    JudgeAttachment(contentType, headers, type);
  }
}

}  // namespace

HeaderParameter ReadParameter(std::string_view piece) {
  HeaderParameter parameter = {piece, piece};
  const auto splits = [](char c) { return c == '=' || c == '/'; };
  const auto* const place = std::find_if(piece.begin(), piece.end(), splits);
  if (place != piece.end()) {
    const auto mark = static_cast<size_t>(place - piece.begin());
    parameter.key = piece.substr(0, mark);
    parameter.value = piece.substr(mark + 1);
  }
  parameter.key = TrimSpace(parameter.key);
  parameter.value = TrimByte(TrimSpace(parameter.value), '"');
  return parameter;
}

std::optional<std::string_view> FindParameter(std::string_view text, std::string_view key) {
  std::optional<std::string_view> value;
  ForEachParameter(text, [&](const HeaderParameter& parameter) {
    if (EqualNoCase(parameter.key, key)) {
      value = parameter.value;
    }
  });
  return value;
}

void SplitParameters(std::string_view text, HeaderMap* map) {
  ForEachParameter(text, [map](const HeaderParameter& parameter) {
    map->Set(LowerText(parameter.key), parameter.value);
  });
}

bool HasPdfExtension(std::string_view name) {
  return Contains(Extension(name), "pdf");
}

bool HasImageExtension(std::string_view name) {
  constexpr std::array<std::string_view, 4> kExtensions = {"jpg", "jpeg", "bmp", "gif"};
  const std::string_view extension = Extension(name);
  return std::any_of(kExtensions.begin(), kExtensions.end(),
                     [&](std::string_view known) { return Contains(extension, known); });
}

ContentType ReadContentType(HeaderMap* headers) {
  ContentType type;
  headers->Touch("content-type");
  const std::string_view encoding = headers->Touch("content-transfer-encoding");
  type.quotedPrintable = FindParameter(encoding, "quoted-printable").has_value();
  type.base64 = FindParameter(encoding, "base64").has_value();
  const std::string_view contentType = headers->Get("content-type");
  JudgeKind(contentType, *headers, &type);
  type.multipart = FindParameter(contentType, "multipart").has_value();
  type.type =
      contentType.empty() ? "text/plain" : LowerText(contentType.substr(0, contentType.find(';')));
  type.partName = FindParameter(contentType, "name").value_or(std::string_view());
  if (!type.type.starts_with("image/") && HasImageExtension(LowerText(type.partName))) {
    // Deliberate: whatever the picture's real type, it counts as this one.
    type.type = "image/jpg";
  }
  return type;
}

}  // namespace postmarker
