// The names of the MPI kinds, by their number in the settings.
#ifndef KR_UI_DIALOGS_MPIKINDS_H
#define KR_UI_DIALOGS_MPIKINDS_H

inline constexpr const char* kMpiKinds[] = {"ANL MPI: MPICH2", "Intel MPI", "Microsoft MPI",
                                            "IBM Platform MPI"};

#endif
