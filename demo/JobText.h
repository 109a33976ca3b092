// The jobs of the INC and Vorel roles: small texts of our own, ".fin" and ".dat".
#ifndef STANDIN_JOBTEXT_H
#define STANDIN_JOBTEXT_H

#include <string>

// Lines "TITLE text", "STEPS n" and "ELEMENTS n"; lines that begin with "$" are comments, empty
// lines are let pass.
struct JobText {
  std::string title;
  int steps = 10;  // 1 to 1000
  int elements = 0;
  std::string error;  // what is wrong with the first bad line, or with the file
};

// The job that a command line names without its extension: the file with the extension, in small
// or capital letters, else a file of just that name. Empty when there is none.
std::string FindJobText(const std::string& withoutExtension, const std::string& extension);

JobText ReadJobText(const std::string& path);

#endif
