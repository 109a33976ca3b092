#include "app/Program.h"

int main(int argc, char** argv) {
  return RunProgram(std::vector<std::string>(argv, argv + argc));
}
