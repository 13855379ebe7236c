#include <windows.h>

#include <bcrypt.h>

#include "analysis/message/Md5.h"
#include "support/UniqueHandle.h"

namespace postmarker {
namespace {

struct AlgorithmTraits {
  using Type = BCRYPT_ALG_HANDLE;
  static Type None() noexcept { return nullptr; }
  static bool IsOpen(Type handle) noexcept { return handle != nullptr; }
  static void Close(Type handle) noexcept { ::BCryptCloseAlgorithmProvider(handle, 0); }
};

struct HashTraits {
  using Type = BCRYPT_HASH_HANDLE;
  static Type None() noexcept { return nullptr; }
  static bool IsOpen(Type handle) noexcept { return handle != nullptr; }
  static void Close(Type handle) noexcept { ::BCryptDestroyHash(handle); }
};

}  // namespace

struct Md5::State {
  UniqueHandle<AlgorithmTraits> algorithm;
  UniqueHandle<HashTraits> hash;
};

Md5::Md5() : m_state(std::make_unique<State>()) {}

Md5::~Md5() = default;

void Md5::Start() {
  State& state = *m_state;
  state.hash.Reset();
  if (!state.algorithm) {
    ::BCryptOpenAlgorithmProvider(state.algorithm.Put(), BCRYPT_MD5_ALGORITHM, nullptr, 0);
  }
  if (state.algorithm) {
    ::BCryptCreateHash(state.algorithm.Get(), state.hash.Put(), nullptr, 0, nullptr, 0, 0);
  }
}

void Md5::Add(std::string_view bytes) {
  if (m_state->hash && !bytes.empty()) {
    auto* const data = reinterpret_cast<UCHAR*>(const_cast<char*>(bytes.data()));
    ::BCryptHashData(m_state->hash.Get(), data, static_cast<ULONG>(bytes.size()), 0);
  }
}

Md5Digest Md5::Finish() {
  Md5Digest digest = {};
  if (m_state->hash) {
    ::BCryptFinishHash(m_state->hash.Get(), digest.data(), static_cast<ULONG>(digest.size()), 0);
  }
  return digest;
}

}  // namespace postmarker
