// Where jobs are handed over.
#ifndef KR_CORE_HANDOVERPLACE_H
#define KR_CORE_HANDOVERPLACE_H

#include <string>
#include <vector>

struct HandOverPlace {
  std::string folder;  // of the hand-over file
  // The file that the copy of the user holds which has the window, see FileLock.h; empty: the place
  // does not tell of a copy, which only looks there for jobs.
  std::string lock;
};

// The places of this user on this computer, the first one for whoever finds no copy running. The
// copy that has the window holds the locks of all its places and looks for jobs in all of them;
// another copy hands its jobs over where it finds a lock held. So the two find each other when they
// have one place in common, whatever started them.
//
// Windows: "orla\handover" in the local application data of the user's profile, as the system tells
// it of the user, not of the environment; and the temporary folder, which does depend on the
// environment, for other programs that put the file there. Linux: "/dev/shm/kr-UID", which neither
// a home that cannot be reached nor another name of the computer changes; and "handover-HOST" in
// ".config/orla" of the home folder that the user database names (a home may be shared by
// computers), for jobs that have a "/dev/shm" of their own, because the system may clear that one
// when the user logs out, and because somebody else may have taken that name there. A place is made
// when it is missing; it must belong to the user, and nobody else may enter it.
// KESTRUN_HANDOVER_FOLDER, with a path that is not relative, names another folder instead of all.
// Never empty: when none can be had, it is the one that should be.
std::vector<HandOverPlace> HandOverPlaces();

// Of the folders that should be places, those that somebody else has or keeps from us: a copy that
// knows of no other place is not found.
std::vector<std::string> TakenHandOverFolders();

// What differs between the systems.
namespace hand_over_place {

// The folders that follow from the user alone, the best one first.
std::vector<std::string> FoldersOfUser();

// Makes the folder where it is missing, and closes it to others. False when it is not the user's.
bool MakeOwn(const std::string& path);

// Where other programs may put the file; empty: nowhere else.
std::string OthersFolder();

}  // namespace hand_over_place

#endif
