#include "ui/window/EndRequests.h"

void OnEndRequest(const std::function<void()>&, const std::function<void()>&) {}

void OnDisplayLost(const std::function<void()>&) {}
