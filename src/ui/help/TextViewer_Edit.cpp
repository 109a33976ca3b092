// The text window's part that edits and saves.
#include "ui/help/TextViewer.h"

#include <algorithm>

#include "ui/dialogs/ComnMsgBox.h"
#include "ui/text/Encoding.h"
#include "util/files/FileDirWrapper.h"

std::function<void(const std::string& path)> TextViewer::OnSaved;

bool TextViewer::ReadWhole(std::string& bytes) const {
  return Read(0, kMostBytes + 1, bytes) && static_cast<std::int64_t>(bytes.size()) <= kMostBytes;
}

bool TextViewer::LoadToEdit() {
  std::string bytes;
  gone_ = !ReadWhole(bytes);
  if (!gone_) {
    editing_ = std::make_unique<EditableText>(bytes);
    const int place = display_->insert_position();
    buffer_.canUndo(0);
    SetText(editing_->Text());
    buffer_.canUndo(1);
    display_->insert_position(std::min(place, buffer_.length()));
    Keep(bytes);
    SetEdited(false);
  }
  ShowNote();
  return !gone_;
}

// These are the bytes on the disk now.
void TextViewer::Keep(const std::string& bytes) {
  stored_ = bytes;
  end_ = static_cast<std::int64_t>(bytes.size());
  otherChanged_ = false;
  saved_ = false;
  KnowFile(end_);
}

void TextViewer::FollowToEdit() {
  const std::int64_t written = FileDirWrapper::WriteTime(path_);
  if (written == written_ && !gone_) return;
  written_ = written;
  std::string bytes;
  gone_ = !ReadWhole(bytes);
  otherChanged_ = !gone_ && bytes != stored_;
  if (otherChanged_ && !edited_) {
    LoadToEdit();
  } else {
    ShowNote();
  }
}

void TextViewer::TextChanged(int, int inserted, int deleted, int, const char*, void* self) {
  auto* window = static_cast<TextViewer*>(self);
  if (window->editable_ && !window->loading_ && inserted + deleted > 0) window->SetEdited(true);
}

void TextViewer::SetEdited(bool edited) {
  edited_ = edited;
  if (edited) saved_ = false;
  edited ? save_->activate() : save_->deactivate();
  ShowNote();
}

bool TextViewer::Ask(const char* question, const char* yes, const char* no) {
  ComnMsgBox box(label(), texts_.Format(question, ToUi(path_)), ComnMsgBox::kQuestion,
                 ComnMsgBox::kRatherNo, this);
  box.SetButtonTexts(texts_.Get(yes), texts_.Get(no));
  return box.DoModal() == ComnMsgBox::kPressedYes;
}

bool TextViewer::MayDrop() {
  return !edited_ || Ask("ui_text_ask_drop", "ui_text_drop", "ui_text_keep");
}

// One that is missing is written anew.
bool TextViewer::IsAsKnown() const {
  std::string onDisk;
  return !FileDirWrapper::FileExists(path_) || (ReadWhole(onDisk) && onDisk == stored_);
}

void TextViewer::Save() {
  const auto tell = [this](const std::string& text) {
    ComnMsgBox::Inform(this, label(), text, texts_.Get("ui_ok"));
  };
  std::string bytes;
  if (!editing_->ToFile(Text(), bytes)) return tell(texts_.Get("ui_text_no_place"));
  if (!IsAsKnown() && !Ask("ui_text_ask_over", "ui_text_over", "ui_cancel")) return;
  std::string why;
  if (!FileDirWrapper::WriteFileWhole(path_, bytes, &why))
    return tell(texts_.Format("ui_text_not_saved", ToUi(path_)) + "\n" + ToUi(why));
  Keep(bytes);
  saved_ = true;
  SetEdited(false);
  if (OnSaved) OnSaved(path_);
}

void TextViewer::KeepChanges(const MessageSink& say) {
  if (!edited_) return;
  edited_ = false;
  const std::string text = Text();
  std::string bytes;
  const bool hasPlaces = editing_->ToFile(text, bytes);
  if (hasPlaces && IsAsKnown() && FileDirWrapper::WriteFileWhole(path_, bytes))
    return say(Message(MessageId::kTypedIsSaved, path_));
  std::string beside = path_ + ".unsaved";
  for (int number = 2; FileDirWrapper::FileExists(beside); ++number)
    beside = path_ + ".unsaved" + std::to_string(number);
  std::string why;
  if (FileDirWrapper::WriteFileWhole(beside, hasPlaces ? bytes : text, &why)) {
    say(Message(MessageId::kTypedIsBeside, path_, beside));
  } else {
    say(Message(MessageId::kTypedIsLost, path_, why));
  }
}
