#include "settings/VbScriptRegExp_win.h"

#include "support/ComPtr_win.h"
#include "support/Variant_win.h"

namespace postmarker {
namespace {

constexpr CLSID kRegExpClass = {
    0x3F4DACA4, 0x160D, 0x11D2, {0xA8, 0xE9, 0x00, 0x10, 0x4B, 0x36, 0x5C, 0x9F}};

// Called by name: the class has had several interfaces, and its members have the same names in all
// of them.
class VbScriptRegExp final : public RegExpEngine {
 public:
  explicit VbScriptRegExp(ComPtr<IDispatch> object) : m_object(std::move(object)) {}

  // Case is ignored and matching is global, whatever the pattern.
  bool SetUp() {
    return Put(L"IgnoreCase", BoolVariant(true)) && Put(L"Global", BoolVariant(true));
  }

  bool SetPattern(const std::wstring& pattern) override {
    const Bstr text = MakeBstr(pattern);
    return text && Put(L"Pattern", TextVariant(text));
  }

  std::optional<bool> Test(const std::wstring& text) override {
    const Bstr argument = MakeBstr(text);
    if (!argument) {
      return std::nullopt;
    }
    VARIANT variant = TextVariant(argument);
    DISPPARAMS arguments = {&variant, nullptr, 1, 0};
    Variant result;
    if (!Call(L"Test", DISPATCH_METHOD, &arguments, result.Put()) || result.Get().vt != VT_BOOL) {
      return std::nullopt;
    }
    return result.Get().boolVal != VARIANT_FALSE;
  }

 private:
  bool Put(const wchar_t* name, VARIANT value) {
    DISPID propertyPut = DISPID_PROPERTYPUT;
    DISPPARAMS arguments = {&value, &propertyPut, 1, 1};
    return Call(name, DISPATCH_PROPERTYPUT, &arguments, nullptr);
  }

  bool Call(const wchar_t* name, WORD kind, DISPPARAMS* arguments, VARIANT* result) {
    DISPID id = DISPID_UNKNOWN;
    auto* nameText = const_cast<wchar_t*>(name);
    const HRESULT found = m_object->GetIDsOfNames(IID_NULL, &nameText, 1, LOCALE_USER_DEFAULT, &id);
    return SUCCEEDED(found) && SUCCEEDED(m_object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, kind,
                                                          arguments, result, nullptr, nullptr));
  }

  ComPtr<IDispatch> m_object;
};

}  // namespace

std::unique_ptr<RegExpEngine> CreateVbScriptRegExp() {
  ComPtr<IDispatch> object;
  if (FAILED(::CoCreateInstance(kRegExpClass, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                                object.PutVoid())) ||
      !object) {
    return nullptr;
  }
  auto engine = std::make_unique<VbScriptRegExp>(std::move(object));
  return engine->SetUp() ? std::move(engine) : nullptr;
}

}  // namespace postmarker
