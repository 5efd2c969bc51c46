// COffscreenGui makes the process a Qt GUI application for its lifetime, so that text can be drawn
// into images: Qt gives fonts only to a QGuiApplication. Unless QT_QPA_PLATFORM says otherwise it
// uses the "minimal" platform with fonts enabled, which needs no display; the fonts come from
// fontconfig.
//
// Qt's messages go to the module's log meanwhile. Nothing happens when a Qt application object
// exists already (the host's, or a test's).
//
// Threading contract: make and destroy on the main thread, one object at a time.
#ifndef ANNOTATIONLAYER_CLI_OFFSCREEN_GUI_H
#define ANNOTATIONLAYER_CLI_OFFSCREEN_GUI_H

#include <QtGlobal>

#include <memory>

class QGuiApplication;

class COffscreenGui {
 public:
  COffscreenGui();
  ~COffscreenGui();
  COffscreenGui(const COffscreenGui&) = delete;
  COffscreenGui& operator=(const COffscreenGui&) = delete;

 private:
  // QGuiApplication keeps references to these for its whole life.
  int argc_ = 1;
  char name_[16] = "annotationlayer";
  char* argv_[2] = {name_, nullptr};
  std::unique_ptr<QGuiApplication> application_;
  QtMessageHandler previousHandler_ = nullptr;
  bool handlerInstalled_ = false;
};

#endif  // ANNOTATIONLAYER_CLI_OFFSCREEN_GUI_H
