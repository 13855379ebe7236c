#include "Tool.h"

int main(int argc, char** argv) {
  return postmarker::inspect::RunTool(
      std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc));
}
