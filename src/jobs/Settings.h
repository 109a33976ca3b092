// The user's settings as plain data. Field names are the keys of the settings file.
#ifndef KR_JOBS_SETTINGS_H
#define KR_JOBS_SETTINGS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

enum class SolverKind : int;  // jobs/JobFile.h

struct Settings {
  // What a user may ask for.
  static constexpr int kMostMemory = 2147483647;  // megabytes; what the settings file can hold
  static constexpr int kMostCpus = 100000;

  // Of a solver.
  enum Console : int { kConsoleWindow, kConsoleMinimised, kConsoleNone };

  // GENERAL
  std::uint64_t memory_size = 500;  // megabytes
  bool memory_auto = true;          // a deck's own memory request wins over memory_size
  int pause_time = 2;               // seconds before each job
  int cpu_count = 1;
  std::string force = "d3plotint";  // file name behind the solver's s= option
  bool output_dump = true;
  bool no_adapdump = false;
  std::string last_path;
  std::string last_solver_path;
  std::string xterm_path = "xterm";
  int language = 0;   // 0 English, 1 Chinese
  int keep_jobs = 1;  // jobs left by the last session: 0 dropped, 1 offered, 2 restored at once
  int stop_after_failures = 10;  // in a row: the group pauses; 0: never
  std::string report_file;       // written when all submitted groups have ended; empty: none
  int console = 0;               // a Console
  int separate_results = 1;  // of decks that share a folder: 0 never, 1 the window asks, 2 always
  std::string group;
  std::string table_columns;  // the extra ones that are shown, and widths; see JobTable

  // SOLVER
  std::array<std::string, 10> solver_path;  // by solver kind; the rest stays empty
  std::string& SolverPath(SolverKind kind) {
    return solver_path.at(static_cast<std::size_t>(kind));
  }
  const std::string& SolverPath(SolverKind kind) const {
    return solver_path.at(static_cast<std::size_t>(kind));
  }
  std::string mpp_solver_s;
  std::string mpp_solver_d;
  std::string inc_token;  // read when present, never written, logged or shown

  // MPP
  bool use_mpp = false;
  bool use_lamboot = false;
  int mpi = 0;  // 0 MPICH2, 1 Intel MPI, 2 Microsoft MPI, 3 Platform MPI, else no host list
  std::string lamboot = "lamboot";
  std::uint64_t memory2 = 200;  // megabytes
  std::string mpi_param;
  std::string mpp_param;
  int protocol = 0;

  // HEALTH: when a running job is marked; 0 switches a check off
  int health_silence_minutes = 10;    // and five times the longest pause before
  int health_step_percent = 1;        // of the first time step, below
  int health_energy_percent = 10;     // that total energy / initial energy may be away from 1
  int health_hourglass_percent = 10;  // of the internal energy, above
  int health_mass_percent = 5;        // of added mass, above
  int health_not_finite = 1;          // values that are NaN or infinite
  int health_disk_percent = 100;      // of the free space that the rest of the run will need, above
  int min_free_mb = 200;              // no job starts with less space in its folder; 0: always

  // EXTERNAL_APP
  std::string viewer = "notepad.exe";
  std::string post_processor;  // written once it was set; empty: the desktop's choice

  // The host file: a name padded with blanks to 20 characters, then the CPU count.
  std::vector<std::string> host_lines = {"node1               4", "node2               4"};

  bool operator==(const Settings&) const = default;
};

#endif
