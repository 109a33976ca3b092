#include "ui/fltk/ToolkitTexts.h"

#include <FL/fl_ask.H>
#include <FL/Fl_File_Chooser.H>
#include <FL/Fl_Native_File_Chooser.H>

void SetToolkitTexts(const TextTable& texts) {
  struct Place {
    const char*& text;
    const char* key;
  };
  const Place places[] = {
      {fl_ok, "ui_ok"},
      {fl_cancel, "ui_cancel"},
      {fl_yes, "ui_yes"},
      {fl_no, "ui_no"},
      {Fl_File_Chooser::add_favorites_label, "ui_files_add_favorite"},
      {Fl_File_Chooser::all_files_label, "ui_files_all"},
      {Fl_File_Chooser::custom_filter_label, "ui_files_custom"},
      {Fl_File_Chooser::existing_file_label, "ui_files_existing"},
      {Fl_File_Chooser::favorites_label, "ui_files_favorites"},
      {Fl_File_Chooser::filename_label, "ui_files_name"},
      {Fl_File_Chooser::filesystems_label, "ui_files_systems"},
      {Fl_File_Chooser::manage_favorites_label, "ui_files_manage"},
      {Fl_File_Chooser::new_directory_label, "ui_files_new_folder"},
      {Fl_File_Chooser::new_directory_tooltip, "ui_files_new_folder_tip"},
      {Fl_File_Chooser::preview_label, "ui_files_preview"},
      {Fl_File_Chooser::save_label, "ui_files_save"},
      {Fl_File_Chooser::show_label, "ui_files_show"},
      {Fl_File_Chooser::hidden_label, "ui_files_hidden"},
      {Fl_Native_File_Chooser::file_exists_message, "ui_files_replace"},
  };
  for (const Place& place : places) {
    const std::string& text = texts.Get(place.key);
    if (!text.empty()) place.text = text.c_str();
  }
}
