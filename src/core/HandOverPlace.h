// Where the hand-over file lies.
#ifndef KR_CORE_HANDOVERPLACE_H
#define KR_CORE_HANDOVERPLACE_H

#include <string>

// The same folder for all copies of a user on this computer, whatever started them.
//
// Windows: the user's temporary folder. Linux: "handover-HOST" in ".config/orla" of the home folder
// that the user database names, since a home may be shared by computers; where there is no such
// home or nothing can be made in it, "/dev/shm/kr-UID". It is made when it is missing; it must
// belong to the user, and nobody else may enter it. KESTRUN_HANDOVER_FOLDER names another one.
// When none can be had, the path of the one that should be.
std::string HandOverFolder();

// The file that the copy of the user holds which has the window, see FileLock.h. It must not depend
// on the environment: on Windows it lies in the work folder.
std::string FirstCopyLock(const std::string& workFolder);

#endif
