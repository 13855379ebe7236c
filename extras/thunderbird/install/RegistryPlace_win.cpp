#include "RegistryPlace_win.h"

#include <cstring>

#include "support/Registry_win.h"
#include "support/Text.h"

namespace postmarker::install {
namespace {

constexpr size_t kTypeBytes = 4;

std::string MakeContent(DWORD type, std::string_view bytes) {
  std::string content;
  for (size_t i = 0; i < kTypeBytes; ++i) {
    content.push_back(static_cast<char>((type >> (8 * i)) & 0xFF));
  }
  return content.append(bytes);
}

// REQUIRES: content.size() >= kTypeBytes.
DWORD TypeOf(std::string_view content) {
  DWORD type = 0;
  for (size_t i = kTypeBytes; i-- > 0;) {
    type = type << 8 | static_cast<unsigned char>(content[i]);
  }
  return type;
}

bool IsMissing(LSTATUS status) {
  return status == ERROR_FILE_NOT_FOUND || status == ERROR_PATH_NOT_FOUND;
}

}  // namespace

std::string TextContent(const std::wstring& text) {
  return MakeContent(
      REG_SZ, {reinterpret_cast<const char*>(text.c_str()), (text.size() + 1) * sizeof(wchar_t)});
}

std::string RegistryPlace::Name() const {
  const std::string key = "HKEY_CURRENT_USER\\" + NarrowUtf8(m_key);
  return m_value.empty() ? key : key + " | " + NarrowUtf8(m_value);
}

bool RegistryPlace::Read(Content* content) const {
  content->reset();
  RegistryKeyHandle key;
  const LSTATUS opened =
      ::RegOpenKeyExW(HKEY_CURRENT_USER, m_key.c_str(), 0, KEY_QUERY_VALUE, key.Put());
  if (opened != ERROR_SUCCESS) {
    return IsMissing(opened);
  }
  DWORD size = 0;
  const LSTATUS asked =
      ::RegQueryValueExW(key.Get(), m_value.c_str(), nullptr, nullptr, nullptr, &size);
  if (asked != ERROR_SUCCESS) {
    return IsMissing(asked);
  }
  if (size > kMaxContentBytes) {
    return false;
  }
  std::string bytes(size, '\0');
  DWORD type = 0;
  if (::RegQueryValueExW(key.Get(), m_value.c_str(), nullptr, &type,
                         reinterpret_cast<BYTE*>(bytes.data()), &size) != ERROR_SUCCESS ||
      size > bytes.size()) {
    return false;
  }
  *content = MakeContent(type, std::string_view(bytes).substr(0, size));
  return true;
}

bool RegistryPlace::Write(const Content& content) {
  if (!content) {
    const RegistryKey key = RegistryKey::Open(HKEY_CURRENT_USER, m_key, KEY_SET_VALUE);
    return key.DeleteValue(m_value.c_str());
  }
  if (content->size() < kTypeBytes) {
    return false;
  }
  const size_t size = content->size() - kTypeBytes;
  // The system counts a NUL after a text as a part of it, so there is none after these bytes.
  const std::string padded = *content + "xxxx";
  return RegistryKey::Create(HKEY_CURRENT_USER, m_key, KEY_SET_VALUE)
      .WriteBytes(m_value.c_str(), TypeOf(*content), padded.data() + kTypeBytes,
                  static_cast<DWORD>(size));
}

std::vector<std::string> RegistryPlace::MissingParents() const {
  std::vector<std::string> missing;
  for (size_t end = 0; end != std::wstring::npos;) {
    end = m_key.find(L'\\', end + 1);
    const std::wstring parent = m_key.substr(0, end);
    RegistryKeyHandle key;
    if (IsMissing(
            ::RegOpenKeyExW(HKEY_CURRENT_USER, parent.c_str(), 0, KEY_QUERY_VALUE, key.Put()))) {
      missing.push_back(NarrowUtf8(parent));
    }
  }
  return missing;
}

void RegistryPlace::RemoveParent(const std::string& parent) {
  const std::wstring path = WidenUtf8(parent);
  DWORD keys = 0;
  DWORD values = 0;
  RegistryKeyHandle key;
  if (::RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_QUERY_VALUE, key.Put()) ==
          ERROR_SUCCESS &&
      ::RegQueryInfoKeyW(key.Get(), nullptr, nullptr, nullptr, &keys, nullptr, nullptr, &values,
                         nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS &&
      keys == 0 && values == 0) {
    key.Reset();
    ::RegDeleteKeyW(HKEY_CURRENT_USER, path.c_str());
  }
}

}  // namespace postmarker::install
