// Mail analysis over a folder of real messages, and what other mail software takes for the same
// messages. Workloads: headers; whole message (walk, digests and all features); the same with all
// keys read in order; the walk alone; tokenizing the text parts; scanning the HTML parts; the
// peers' parse, and parse and decode; the peers' programs as processes. All figures are bytes of
// messages a second of user time, but for the texts and HTML parts, where the bytes are theirs.
// Each workload is run once before it is measured, and its result checked.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "MailFolder.h"
#include "PeerLibraries.h"
#include "PeerProcesses_posix.h"
#include "UserTime_posix.h"
#include "analysis/features/KsMailTokenizer.h"
#include "analysis/words/HtmlTokens.h"
#include "analysis/words/TextTokens.h"

namespace postmarker::bench {
namespace {

// Measures `work`, which reads all of `bytes` and returns something that must not be 0.
template <class Work>
void Measure(benchmark::State& state, size_t bytes, Work work) {
  if (bytes == 0 || work() == 0) {
    state.SkipWithError("no messages in $POSTMARKER_MAIL, or nothing found in them");
    return;
  }
  for ([[maybe_unused]] const auto round : state) {
    const double before = UserSeconds(RUSAGE_SELF);
    auto found = work();
    benchmark::DoNotOptimize(found);
    state.SetIterationTime(UserSeconds(RUSAGE_SELF) - before);
  }
  const auto total = static_cast<double>(state.iterations()) * static_cast<double>(bytes);
  state.counters["MB/s"] = benchmark::Counter(total / 1e6, benchmark::Counter::kIsRate);
}

template <class Read>
size_t ForEachMessage(Read read) {
  size_t found = 0;
  for (const std::string& message : Mail().messages) {
    found += read(message);
  }
  return found;
}

void Headers(benchmark::State& state) {
  KsMailHeaderParser parser;
  Measure(state, Mail().bytes, [&] {
    return ForEachMessage([&](const std::string& message) {
      parser.Parse(message.data(), static_cast<uint32_t>(message.size()));
      return parser.GetHeaders().Size() + parser.GetHops().CountHops();
    });
  });
}
BENCHMARK(Headers)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(1);

template <class Finish>
void WholeMessages(benchmark::State& state, Finish finish) {
  KsMailTokenizer tokenizer;
  Measure(state, Mail().bytes, [&] {
    return ForEachMessage([&](const std::string& message) {
      tokenizer.Parse(message.data(), static_cast<uint32_t>(message.size()), nullptr, nullptr);
      return finish(&tokenizer);
    });
  });
}

void WholeMessage(benchmark::State& state) {
  WholeMessages(state, [](KsMailTokenizer* tokenizer) {
    return tokenizer->Tokens().Size() + tokenizer->GetHops().CountHops();
  });
}
BENCHMARK(WholeMessage)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(2);

size_t ReadInOrder(const TokenCountMap& map) {
  size_t bytes = 0;
  for (const TokenCountMap::Item& item : map) {
    bytes += item.key.size();
  }
  return bytes;
}

void WholeMessageReadInOrder(benchmark::State& state) {
  WholeMessages(state, [](KsMailTokenizer* tokenizer) {
    return ReadInOrder(tokenizer->Tokens()) + ReadInOrder(tokenizer->SubjectTokens()) +
           ReadInOrder(tokenizer->FromNameTokens()) + ReadInOrder(tokenizer->HtmlUrls()) +
           ReadInOrder(tokenizer->TextUrls()) + ReadInOrder(tokenizer->TextAddresses());
  });
}
BENCHMARK(WholeMessageReadInOrder)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(2);

void WalkAlone(benchmark::State& state) {
  WholeMessages(state, [](KsMailTokenizer* tokenizer) { return tokenizer->FingerprintCount(); });
}
BENCHMARK(WalkAlone)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(1);

std::vector<std::string> Parts(bool html) {
  std::vector<std::string> parts;
  ForEachMessage([&](const std::string& message) {
    KsMailTokenizer tokenizer;
    tokenizer.Parse(message.data(), static_cast<uint32_t>(message.size()), nullptr, nullptr);
    const auto& found = html ? tokenizer.HtmlParts() : tokenizer.PlainParts();
    parts.insert(parts.end(), found.begin(), found.end());
    return found.size();
  });
  return parts;
}

template <class Read>
void ReadParts(benchmark::State& state, bool html, Read read) {
  const std::vector<std::string> parts = Parts(html);
  size_t bytes = 0;
  for (const std::string& part : parts) {
    bytes += part.size();
  }
  Measure(state, bytes, [&] {
    size_t found = 0;
    for (const std::string& part : parts) {
      TokenCountMap tokens;
      TokenCountMap urls;
      TokenCountMap addresses;
      WordList words;
      read(part, &tokens, &words, &urls, &addresses);
      found += tokens.Size();
    }
    return found;
  });
}

void TokenizeText(benchmark::State& state) {
  ReadParts(state, false, Tokenize);
}
BENCHMARK(TokenizeText)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(1);

void HtmlScan(benchmark::State& state) {
  HtmlStats stats;
  ReadParts(state, true,
            [&](std::string_view text, auto... maps) { ScanHtml(text, maps..., &stats); });
}
BENCHMARK(HtmlScan)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(1);

template <class Read>
void Library(benchmark::State& state, Read read, bool decode) {
  Measure(state, Mail().bytes, [&] {
    return ForEachMessage([&](const std::string& message) {
      const PeerResult result = read(message, decode);
      return result.parts + result.decodedBytes;
    });
  });
}

BENCHMARK_CAPTURE(Library, gmime_parse, ReadWithGMime, false)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->MinTime(1);
BENCHMARK_CAPTURE(Library, gmime_parse_and_decode, ReadWithGMime, true)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->MinTime(1);
BENCHMARK_CAPTURE(Library, mimetic_parse, ReadWithMimetic, false)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->MinTime(1);
BENCHMARK_CAPTURE(Library, mimetic_parse_and_decode, ReadWithMimetic, true)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->MinTime(1);

// What the peers' programs read: all messages one after the other as they are, and as an mbox with
// bare LF, from which these programs can tell one message from the next.
class PeerInput {
 public:
  PeerInput() {
    std::filesystem::create_directories(m_folder / "spamprobe");
    std::ofstream whole(Concatenated(), std::ios::binary);
    std::ofstream mbox(Mbox(), std::ios::binary);
    for (const std::string& message : Mail().messages) {
      whole << message;
      mbox << "From x@example.com Mon Jan  1 00:00:00 2007\n" << MboxLines(message) << "\n\n";
    }
    whole.close();
    RunProgram({"spamprobe", "-d", SpamprobeFolder(), "create-db"}, Concatenated());
  }
  PeerInput(const PeerInput&) = delete;
  PeerInput& operator=(const PeerInput&) = delete;
  ~PeerInput() {
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
  }

  [[nodiscard]] std::string Concatenated() const { return (m_folder / "messages").string(); }
  [[nodiscard]] std::string Mbox() const { return (m_folder / "mbox").string(); }
  [[nodiscard]] std::string SpamprobeFolder() const { return (m_folder / "spamprobe").string(); }

 private:
  static std::string MboxLines(const std::string& message) {
    std::string lines = message;
    std::erase(lines, '\r');
    for (size_t at = 0; (at = lines.find("\nFrom ", at)) != std::string::npos; at += 2) {
      lines.insert(at + 1, ">");
    }
    return lines;
  }

  std::filesystem::path m_folder =
      std::filesystem::temp_directory_path() /
      ("postmarker-bench-" +
       std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()));
};

const PeerInput& TheInput() {
  static const PeerInput input;
  return input;
}

void Program(benchmark::State& state, const std::vector<std::string>& command,
             const std::string& input) {
  if (Mail().bytes == 0 || RunProgram(command, input) < 0) {
    state.SkipWithError("no messages, or the program does not run");
    return;
  }
  for ([[maybe_unused]] const auto round : state) {
    state.SetIterationTime(RunProgram(command, input));
  }
  const auto total = static_cast<double>(state.iterations()) * static_cast<double>(Mail().bytes);
  state.counters["MB/s"] = benchmark::Counter(total / 1e6, benchmark::Counter::kIsRate);
}

std::vector<std::string> OwnCommand(const char* command) {
  const char* const tool = std::getenv("POSTMARKER_INSPECT");
  std::vector<std::string> words = {tool == nullptr ? "postmarker-inspect" : tool, command,
                                    "--quiet"};
  words.insert(words.end(), Mail().paths.begin(), Mail().paths.end());
  return words;
}

void ProgramBogolexer(benchmark::State& state) {
  Program(state, {"bogolexer", "-p"}, TheInput().Concatenated());
}
void ProgramBogolexerMbox(benchmark::State& state) {
  Program(state, {"bogolexer", "-p"}, TheInput().Mbox());
}
void ProgramSpamprobe(benchmark::State& state) {
  const std::string folder = TheInput().SpamprobeFolder();
  const std::string whole = TheInput().Concatenated();
  Program(state, {"spamprobe", "-d", folder, "tokenize", whole}, whole);
}
void ProgramSpamprobeMbox(benchmark::State& state) {
  const std::string folder = TheInput().SpamprobeFolder();
  const std::string mbox = TheInput().Mbox();
  Program(state, {"spamprobe", "-d", folder, "tokenize", mbox}, mbox);
}
void ProgramInspectMessage(benchmark::State& state) {
  Program(state, OwnCommand("message"), TheInput().Concatenated());
}
BENCHMARK(ProgramBogolexer)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(10);
BENCHMARK(ProgramBogolexerMbox)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(ProgramSpamprobe)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(ProgramSpamprobeMbox)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(ProgramInspectMessage)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(10);

}  // namespace
}  // namespace postmarker::bench
