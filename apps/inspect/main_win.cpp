#include <fcntl.h>
#include <io.h>

#include <cstdio>

#include "Tool.h"
#include "support/Text.h"

int wmain(int argc, wchar_t** argv) {
  // Documents and input are bytes: no line ends are made or unmade.
  _setmode(_fileno(stdin), _O_BINARY);
  _setmode(_fileno(stdout), _O_BINARY);
  std::vector<std::string> arguments;
  for (int i = 1; i < argc; ++i) {
    arguments.push_back(postmarker::NarrowUtf8(argv[i]));
  }
  return postmarker::inspect::RunTool(arguments);
}
