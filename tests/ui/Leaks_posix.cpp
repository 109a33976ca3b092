// What the leak check of the address sanitizer passes over: the memory that libraries keep until
// the end, or lose, by themselves. Nothing of ours stands here.

extern "C" const char* __lsan_default_suppressions();

extern "C" const char* __lsan_default_suppressions() {
  return "leak:libfontconfig\n"
         "leak:Fl_Display_Device::display_device\n";
}
