#include "OffscreenGui.h"

#include <QGuiApplication>

#include "ZuLog.h"

namespace {

// Qt's own remarks (a missing runtime directory, font fallbacks) go to the log, which the tool
// shows with --verbose, instead of cluttering standard error.
void LogQtMessage(QtMsgType, const QMessageLogContext&, const QString& message) {
  ZuLOG << "[Qt] " << message.toLocal8Bit().constData();
}

}  // namespace

COffscreenGui::COffscreenGui() {
  if (QCoreApplication::instance() != nullptr) return;
  previousHandler_ = qInstallMessageHandler(LogQtMessage);
  handlerInstalled_ = true;
  // "minimal" with its fonts switched on: no display, and unlike "offscreen" it frees its screens.
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
    qputenv("QT_QPA_PLATFORM", "minimal:enable_fonts");
  }
  application_ = std::make_unique<QGuiApplication>(argc_, argv_);
}

COffscreenGui::~COffscreenGui() {
  application_.reset();
  if (handlerInstalled_) qInstallMessageHandler(previousHandler_);
}
