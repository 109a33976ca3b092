// The main window from its opening to its end. Interface thread.
#ifndef KR_UI_WINDOW_WINDOWLOOP_H
#define KR_UI_WINDOW_WINDOWLOOP_H

#include "messages/Message.h"

class Application;
class QueueNotes;
struct ProgramOptions;

// Shows the window and handles events, the polls among them, until it is closed. `failure`, when
// there is one, stands in its status bar.
void RunWindow(Application& application, QueueNotes& notes, const ProgramOptions& options,
               const Message& failure);

#endif
