#include "ui/window/Termination.h"

void OnTermination(const std::function<void()>&) {}

void OnDisplayLost(const std::function<void()>&) {}
