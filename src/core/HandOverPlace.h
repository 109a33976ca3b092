// Where jobs are handed over.
#ifndef KR_CORE_HANDOVERPLACE_H
#define KR_CORE_HANDOVERPLACE_H

#include <string>
#include <vector>

struct HandOverPlace {
  std::string folder;  // of the hand-over file
  std::string
      lock;  // the file that the copy of the user holds which has the window, see FileLock.h
};

// The places of this user on this computer, the first one for whoever finds no copy running. The
// copy that has the window holds the locks of all its places and looks for jobs in all of them;
// another copy hands its jobs over where it finds a lock held. So the two find each other when they
// have one place in common, whatever started them.
//
// Windows: the user's temporary folder; the lock is in the work folder, which does not depend on
// the environment. Linux: "/dev/shm/kr-UID", which neither a home that cannot be reached nor
// another name of the computer changes; and "handover-HOST" in ".config/orla" of the home folder
// that the user database names (a home may be shared by computers), for jobs that have a "/dev/shm"
// of their own, and because the system may clear that one when the user logs out. A place is made
// when it is missing; it must belong to the user, and nobody else may enter it.
// KESTRUN_HANDOVER_FOLDER names another folder instead of both. Never empty: when none can be had,
// it is the one that should be.
std::vector<HandOverPlace> HandOverPlaces(const std::string& workFolder);

#endif
