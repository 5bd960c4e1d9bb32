// A window that packs a folder and unpacks an archive, with a bar of progress, a button that
// cancels, and a list of what failed and why.
// Usage: archive_window [FOLDER [ARCHIVE]]

#include <FL/Fl.H>
#include <FL/Fl_Browser.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Double_Window.H>
#include <FL/Fl_Input.H>
#include <FL/Fl_Progress.H>

#include <atomic>
#include <cstdio>
#include <memory>
#include <string>

#include "archive_job.h"

namespace {

using FileSystem::ItemResult;
using FileSystem::Reason;

class ArchiveWindow {
 public:
  ArchiveWindow(const char* folder, const char* archive) {
    folder_.value(folder);
    archive_.value(archive);
    bar_.maximum(1);
    bar_.selection_color(FL_DARK_GREEN);
    pack_.callback([](Fl_Widget*, void* self) { start(self, ArchiveJob::Kind::Pack); }, this);
    unpack_.callback([](Fl_Widget*, void* self) { start(self, ArchiveJob::Kind::Unpack); }, this);
    cancel_.callback([](Fl_Widget*, void* self) { of(self).job_->cancel(); }, this);
    cancel_.deactivate();
    static const int kWidths[] = {330, 0};
    failures_.column_widths(kWidths);
    // A name may begin with what the browser takes for a format.
    failures_.format_char(0);
    window_.resizable(failures_);
    window_.end();
    window_.show();
  }

 private:
  static ArchiveWindow& of(void* self) { return *static_cast<ArchiveWindow*>(self); }

  static void start(void* self, ArchiveJob::Kind kind) { of(self).start(kind); }

  void start(ArchiveJob::Kind kind) {
    failures_.clear();
    pack_.deactivate();
    unpack_.deactivate();
    cancel_.activate();
    job_ = std::make_unique<ArchiveJob>(kind, folder_.value(), archive_.value(), [this] {
      // At most one message waits for the window, however fast the job is.
      if (!isAwake_.exchange(true)) Fl::awake([](void* self) { of(self).update(); }, this);
    });
  }

  void update() {
    isAwake_ = false;
    if (!job_) return;
    const ArchiveJob::State state = job_->state();
    if (state.bytesExpected != 0) {
      bar_.value(static_cast<float>(state.bytesDone) / static_cast<float>(state.bytesExpected));
    }
    bar_.copy_label(state.name.c_str());
    if (job_->isFinished()) finish();
  }

  void finish() {
    const FileSystem::Report report = job_->report();
    job_.reset();
    std::size_t done = 0;
    for (const ItemResult& item : report.items) {
      if (item.reason == Reason::None) {
        if (!item.isFolder) ++done;
      } else {
        failures_.add((item.name + '\t' + FileSystem::reasonText(item.reason)).c_str());
      }
    }
    std::string text = std::to_string(done) + " files done";
    if (report.reason != Reason::None) {
      text += std::string("; ") + FileSystem::reasonText(report.reason);
    }
    bar_.copy_label(text.c_str());
    pack_.activate();
    unpack_.activate();
    cancel_.deactivate();
  }

  Fl_Double_Window window_{640, 360, "Archive"};
  Fl_Input folder_{90, 10, 540, 26, "Folder"};
  Fl_Input archive_{90, 42, 540, 26, "Archive"};
  Fl_Button pack_{90, 76, 90, 28, "Pack"};
  Fl_Button unpack_{190, 76, 90, 28, "Unpack"};
  Fl_Button cancel_{290, 76, 90, 28, "Cancel"};
  Fl_Progress bar_{10, 114, 620, 24};
  Fl_Browser failures_{10, 148, 620, 202};
  std::atomic<bool> isAwake_{false};
  std::unique_ptr<ArchiveJob> job_;
};

}  // namespace

int main(int argc, char** argv) {
  // Lets other threads send messages to the window.
  Fl::lock();
  const ArchiveWindow window(argc > 1 ? argv[1] : "", argc > 2 ? argv[2] : "");
  return Fl::run();
}
