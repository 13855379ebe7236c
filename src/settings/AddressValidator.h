// Whether a text that somebody typed may stand on one of the filter's lists.
#pragma once

#include <memory>
#include <optional>
#include <string>

namespace postmarker {

// A regular expression engine. Case is ignored.
class RegExpEngine {
 public:
  RegExpEngine() = default;
  RegExpEngine(const RegExpEngine&) = delete;
  RegExpEngine& operator=(const RegExpEngine&) = delete;
  virtual ~RegExpEngine() = default;

  // Sets the pattern that Test looks for. False if the engine did not take it.
  virtual bool SetPattern(const std::wstring& pattern) = 0;

  // Does the pattern match somewhere in `text`? Nothing if the engine failed.
  virtual std::optional<bool> Test(const std::wstring& text) = 0;
};

// What a text is taken for.
enum class AddressMode { kAddress, kDomain };

// Checks addresses or domains by a pattern for each. Without an engine, or where it fails, plainer
// rules hold. Starts in domain mode. Use it on the thread on which its engine was made.
class AddressValidator {
 public:
  // `engine` may be null.
  explicit AddressValidator(std::unique_ptr<RegExpEngine> engine);

  [[nodiscard]] AddressMode Mode() const { return m_mode; }
  void SetMode(AddressMode mode);

  // White space at the ends does not count. A null text is invalid. The time that the platform's
  // engine takes for an address can double with every two characters of it; that of
  // MakePromptEngine (AddressMatcher.h) gives the same answer at once.
  [[nodiscard]] bool IsValid(const wchar_t* text) const;

 private:
  std::unique_ptr<RegExpEngine> m_engine;
  AddressMode m_mode = AddressMode::kDomain;
  bool m_hasPattern = false;
};

// The pattern of a mode.
const wchar_t* AddressPattern(AddressMode mode);

// The rule where no engine answers: a domain has a "." and no blank; an address also has an "@"
// that stands before its last ".".
bool LooksValid(const std::wstring& text, AddressMode mode);

}  // namespace postmarker
