// Runs this test program once more as a child that shows one behaviour instead of the tests:
//   exit CODE                 ends with the code
//   sleep                     does nothing for a minute
//   own NAME FILE             owns the mutex, makes the file, and sleeps
//   take NAME FILE            makes the file, waits for the event, and ends with the wait's result
//   hold NAME FILE            holds the event open, makes the file, and sleeps
//   lock PATH FILE            takes the lock, makes the file, and sleeps
//   set NAME                  opens the event and sets it
//   tree DEPTH FILE           starts DEPTH more of itself, each the child of the one before it;
//   each
//                             writes its id to FILE followed by its depth, and sleeps
//   leave FILE                starts "tree 0 FILE" and ends
//   look FILE                 writes its folder and what it finds in KR_WORD and KR_EMPTY
#ifndef KR_TESTS_TESTCHILD_H
#define KR_TESTS_TESTCHILD_H

#include <string>

#include "support/WaitUntil.h"
#include "util/process/PTWrapper.h"

// What starts such a child; more can be said about it.
PTWrapperProcessStart TestChildStart(const std::string& behaviour);
// The variable that makes a process of this program one.
inline constexpr char kTestChildSwitch[] = "KR_TEST_CHILD";

// `launcher` is a command line that runs the one that follows it.
bool StartTestChild(PTWrapperProcess& process, const std::string& behaviour,
                    const std::string& launcher = {});

// What this process has open: handles, descriptors.
int OpenHandles();

#endif
