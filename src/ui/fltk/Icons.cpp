#include "ui/fltk/Icons.h"

#include <FL/Fl_PNG_Image.H>
#include <FL/Fl_Window.H>

#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "ui/fltk/IconFiles.h"
#include "ui/fltk/Theme.h"

namespace {

constexpr char kProgramIcon[] = "kestrun";
constexpr float kDisabledWeight = 0.45F;  // how much of the grey icon stays over the background

std::unique_ptr<Fl_RGB_Image> Load(const IconFile& file) {
  return std::make_unique<Fl_PNG_Image>(nullptr, file.data, static_cast<int>(file.bytes));
}

std::unique_ptr<Fl_RGB_Image> Greyed(Fl_RGB_Image& image) {
  std::unique_ptr<Fl_RGB_Image> grey(static_cast<Fl_RGB_Image*>(image.copy()));
  grey->desaturate();
  grey->color_average(Theme::kWindow, kDisabledWeight);
  return grey;
}

}  // namespace

Fl_RGB_Image* Icon(const std::string& name, IconLook look) {
  static std::map<std::pair<std::string, IconLook>, std::unique_ptr<Fl_RGB_Image>> loaded;
  const auto key = std::make_pair(name, look);
  if (const auto found = loaded.find(key); found != loaded.end()) return found->second.get();
  if (look == IconLook::kDisabled) {
    Fl_RGB_Image* normal = Icon(name);
    return normal ? (loaded[key] = Greyed(*normal)).get() : nullptr;
  }
  for (std::size_t i = 0; i < kIconFileCount; ++i) {
    if (name == kIconFiles[i].name) return (loaded[key] = Load(kIconFiles[i])).get();
  }
  return nullptr;
}

Fl_RGB_Image* ProgramPicture(int size) {
  static std::map<int, std::unique_ptr<Fl_RGB_Image>> loaded;
  if (const auto found = loaded.find(size); found != loaded.end()) return found->second.get();
  for (std::size_t i = 0; i < kIconFileCount; ++i) {
    if (std::string(kProgramIcon) == kIconFiles[i].name && kIconFiles[i].size == size)
      return (loaded[size] = Load(kIconFiles[i])).get();
  }
  return nullptr;
}

void SetProgramIcon() {
  std::vector<std::unique_ptr<Fl_RGB_Image>> sizes;
  std::vector<const Fl_RGB_Image*> list;
  for (std::size_t i = 0; i < kIconFileCount; ++i) {
    if (std::string(kProgramIcon) != kIconFiles[i].name) continue;
    sizes.push_back(Load(kIconFiles[i]));
    list.push_back(sizes.back().get());
  }
  // FLTK keeps copies.
  Fl_Window::default_icons(list.data(), static_cast<int>(list.size()));
}
