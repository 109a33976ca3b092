#include "solvers/Hints.h"

namespace {

struct Hint {
  int first;
  int last;
  PlainMessageId text;
};

constexpr Hint kHints[] = {
    {10170, 10170, MessageId::kHintDuplicateNode}, {20444, 20444, MessageId::kHintLoadingCurve},
    {40045, 40045, MessageId::kHintPlasticity},    {40352, 40352, MessageId::kHintThermal},
    {40359, 40359, MessageId::kHintTimeStep},      {40373, 40373, MessageId::kHintJacobian},
    {40500, 40500, MessageId::kHintVelocity},      {40575, 40576, MessageId::kHintPenetration},
    {60004, 60004, MessageId::kHintNonlinear},
};

}  // namespace

bool LookUpHint(int number, Message& hint) {
  for (const Hint& row : kHints) {
    if (number < row.first || number > row.last) continue;
    hint = Message(row.text);
    return true;
  }
  return false;
}
