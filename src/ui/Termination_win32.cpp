#include "ui/Termination.h"

void OnTermination(const std::function<void()>&) {}
