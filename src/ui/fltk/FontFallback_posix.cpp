#include "ui/fltk/FontFallback_posix.h"

#include <FL/Fl.H>
#include <FL/fl_draw.H>
#include <FL/fl_utf8.h>
#include <X11/Xft/Xft.h>

#include <cmath>
#include <map>
#include <memory>
#include <string>
#include <vector>

// The font that is set; the toolkit's headers show it to the toolkit only.
extern FL_EXPORT void* fl_xftfont;

namespace {

constexpr unsigned kFirstPrintable = 0x20;

// The installed fonts in the order in which they are asked for a character. Each has a number of
// the toolkit for its normal and one for its bold face.
class InstalledFonts {
 public:
  // The number of the face that has the character; -1 when no font has it.
  int FaceFor(unsigned character, bool bold) {
    const auto known = fontOf_.find(character);
    const int font = known != fontOf_.end() ? known->second : fontOf_[character] = Find(character);
    return font < 0 ? -1 : Face(static_cast<std::size_t>(font), bold);
  }

 private:
  struct Font {
    std::string name[2];  // in the toolkit's form; the toolkit keeps the pointers
    int face[2] = {-1, -1};
    FcCharSet* characters;  // belongs to the list
  };

  int Find(unsigned character) {
    if (!listed_) List();
    for (std::size_t i = 0; i < fonts_.size(); ++i) {
      if (FcCharSetHasChar(fonts_[i]->characters, character)) return static_cast<int>(i);
    }
    return -1;
  }

  void List() {
    listed_ = true;
    const std::unique_ptr<FcPattern, decltype(&FcPatternDestroy)> wanted(
        FcNameParse(reinterpret_cast<const FcChar8*>("sans")), FcPatternDestroy);
    if (!wanted) return;
    FcConfigSubstitute(nullptr, wanted.get(), FcMatchPattern);
    FcDefaultSubstitute(wanted.get());
    FcResult result = FcResultMatch;
    FcFontSet* all = FcFontSort(nullptr, wanted.get(), FcTrue, nullptr, &result);
    if (!all) return;
    for (int i = 0; i < all->nfont; ++i) {
      FcChar8* family = nullptr;
      FcCharSet* characters = nullptr;
      FcBool coloured = FcFalse;
      FcPatternGetBool(all->fonts[i], FC_COLOR, 0, &coloured);
      if (coloured ||  // some versions of the drawing library end the program with these
          FcPatternGetString(all->fonts[i], FC_FAMILY, 0, &family) != FcResultMatch ||
          FcPatternGetCharSet(all->fonts[i], FC_CHARSET, 0, &characters) != FcResultMatch) {
        continue;
      }
      auto font = std::make_unique<Font>();
      const std::string name = reinterpret_cast<const char*>(family);
      font->name[0] = " " + name;
      font->name[1] = "B" + name;
      font->characters = FcCharSetCopy(characters);
      fonts_.push_back(std::move(font));
    }
    FcFontSetDestroy(all);
  }

  int Face(std::size_t index, bool bold) {
    Font& font = *fonts_[index];
    int& face = font.face[bold];
    if (face < 0) {
      face = nextFace_++;
      Fl::set_font(face, font.name[bold].c_str());
    }
    return face;
  }

  bool listed_ = false;
  std::vector<std::unique_ptr<Font>> fonts_;
  std::map<unsigned, int> fontOf_;
  int nextFace_ = FL_FREE_FONT;
};

bool IsPlain(const char* text, int bytes) {
  for (int i = 0; i < bytes; ++i) {
    if ((text[i] & 0x80) != 0) return false;
  }
  return true;
}

// The toolkit's drawing on the screen, text in pieces of one font.
class FallbackDriver : public Fl_Xlib_Graphics_Driver {
 public:
  using Fl_Xlib_Graphics_Driver::draw;
  using Fl_Xlib_Graphics_Driver::font;
  using Fl_Xlib_Graphics_Driver::width;

  void draw(const char* text, int bytes, int x, int y) override {
    if (IsPlain(text, bytes)) return Fl_Xlib_Graphics_Driver::draw(text, bytes, x, y);
    double at = x;
    ForPieces(text, bytes, [&](const char* piece, int length) {
      Fl_Xlib_Graphics_Driver::draw(piece, length, static_cast<int>(std::lround(at)), y);
      at += Fl_Xlib_Graphics_Driver::width(piece, length);
    });
  }

  double width(const char* text, int bytes) override {
    if (IsPlain(text, bytes)) return Fl_Xlib_Graphics_Driver::width(text, bytes);
    double sum = 0;
    ForPieces(text, bytes, [&](const char* piece, int length) {
      sum += Fl_Xlib_Graphics_Driver::width(piece, length);
    });
    return sum;
  }

  double width(unsigned character) override {
    char text[4];
    const int bytes = fl_utf8encode(character, text);
    return width(text, bytes);
  }

 private:
  // Calls `use` for each piece with its font set, and sets the text's own font again.
  template <typename Use>
  void ForPieces(const char* text, int bytes, Use use) {
    const Fl_Font own = Fl_Graphics_Driver::font();
    const Fl_Fontsize size = this->size();
    const char* end = text + bytes;
    const char* piece = text;
    Fl_Font pieceFace = own;
    for (const char* at = text; at < end;) {
      int length = 1;
      const unsigned character = fl_utf8decode(at, end, &length);
      const Fl_Font face = FaceFor(character, own);
      if (face != pieceFace && at > piece) {
        font(pieceFace, size);
        use(piece, static_cast<int>(at - piece));
        font(own, size);
        piece = at;
      }
      pieceFace = face;
      at += length;
    }
    font(pieceFace, size);
    if (end > piece) use(piece, static_cast<int>(end - piece));
    font(own, size);
  }

  // With the text's own font set.
  Fl_Font FaceFor(unsigned character, Fl_Font own) {
    const auto* drawn = static_cast<const XftFont*>(fl_xftfont);
    if (!drawn || character < kFirstPrintable || FcCharSetHasChar(drawn->charset, character))
      return own;
    const int face = fonts_.FaceFor(character, (own & FL_BOLD) != 0 && own < FL_SYMBOL);
    return face < 0 ? own : face;
  }

  InstalledFonts fonts_;
};

}  // namespace

void InstallFontFallback() {
  static auto* const driver = new FallbackDriver;  // windows may be drawn until the very end
  Fl_Surface_Device* display = Fl_Display_Device::display_device();
  display->driver(driver);
  display->set_current();
}
