// What the detection of mail clients sees of the machine: registry, files, and the platform's
// version.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace postmarker {

struct PlatformVersion {
  uint32_t major = 0;
  uint32_t minor = 0;
};

enum class RegistryRoot { kUser, kMachine };

// Which of a machine's two registry views a key is opened in.
enum class RegistryView {
  kDefault,  // the one of this program's width
  kSuite,    // the one that all parts of the suite share
  k32Bit,    // the one of 32-bit clients
};

// Each question looks at the machine, and nothing is kept. Whatever can't be read is not there. Any
// thread.
class MachineView {
 public:
  MachineView() = default;
  MachineView(const MachineView&) = delete;
  MachineView& operator=(const MachineView&) = delete;
  virtual ~MachineView() = default;

  [[nodiscard]] virtual PlatformVersion Version() const = 0;

  // Can the key be opened for reading.
  [[nodiscard]] virtual bool HasKey(RegistryRoot root, const std::wstring& path) const = 0;

  // The names of a key's subkeys, but for those that need more than `room` units with their
  // terminator.
  [[nodiscard]] virtual std::vector<std::wstring> SubkeyNames(RegistryRoot root,
                                                              const std::wstring& path,
                                                              size_t room) const = 0;

  // Is there a value of any type with at most `roomInBytes` bytes.
  [[nodiscard]] virtual bool HasValue(RegistryRoot root, const std::wstring& path,
                                      const std::wstring& name, size_t roomInBytes) const = 0;

  // A text value of at most 260 units with its terminator, not expanded.
  [[nodiscard]] virtual std::optional<std::wstring> ReadText(RegistryRoot root,
                                                             const std::wstring& path,
                                                             const std::wstring& name,
                                                             RegistryView view) const = 0;

  // The text with its environment variables put in; nothing if that has more than 2048 units.
  [[nodiscard]] virtual std::optional<std::wstring> Expand(const std::wstring& text) const = 0;

  // The version that a program file's own resource tells, as text.
  [[nodiscard]] virtual std::optional<std::wstring> FileVersionText(
      const std::wstring& path) const = 0;

  // Does the folder of Postmarker.dll hold a module of this file name that loads. It does not stay
  // loaded.
  [[nodiscard]] virtual bool CanLoadBesideModule(const std::wstring& fileName) const = 0;
};

// The machine that the program runs on. There is none in builds for other systems: there, a view is
// always handed over.
const MachineView& ThisMachine();

}  // namespace postmarker
