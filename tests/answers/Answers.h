// Questions that both systems are asked, in our own words to them. One line an answer:
//   service | case | answer
// with bytes that cannot be printed as \xNN and line ends as \n. What differs from run to run, as
// folders and ids do, is in no answer.
#ifndef KR_TESTS_ANSWERS_H
#define KR_TESTS_ANSWERS_H

#include <string>
#include <vector>

void Answer(const std::string& service, const std::string& question, const std::string& answer);

void AnswerProfiles();
void AnswerSignals();
void AnswerProcesses();
void AnswerPaths();
void AnswerCommandLines();

// What a child of this program does instead; -1 for words that are no behaviour.
int BehaveAsChild(const std::vector<std::string>& words);

// The words of a command line as the system itself splits them.
std::vector<std::string> SystemArguments(const std::string& commandLine);

#endif
