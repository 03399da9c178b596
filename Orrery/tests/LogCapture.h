// LogCapture: collects the messages logged while it exists, as
// "category: message", instead of printing them.
//
// Thread rules: test code; messages from any thread are collected under a
// lock. One capture at a time.
#pragma once

#include <QString>
#include <QtGlobal>

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

namespace orrery::app::testing {

class LogCapture {
 public:
  LogCapture() {
    active() = this;
    previous_ = qInstallMessageHandler(&LogCapture::handle);
  }
  ~LogCapture() {
    qInstallMessageHandler(previous_);
    active() = nullptr;
  }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  std::vector<std::string> lines() const {
    std::lock_guard lock(mutex_);
    return lines_;
  }
  bool contains(const std::string& line) const {
    std::lock_guard lock(mutex_);
    return std::find(lines_.begin(), lines_.end(), line) != lines_.end();
  }
  bool containsPrefix(const std::string& prefix) const {
    std::lock_guard lock(mutex_);
    return std::any_of(lines_.begin(), lines_.end(),
                       [&](const std::string& line) { return line.starts_with(prefix); });
  }

 private:
  static LogCapture*& active() {
    static LogCapture* capture = nullptr;
    return capture;
  }
  static void handle(QtMsgType, const QMessageLogContext& context, const QString& message) {
    LogCapture* capture = active();
    if (capture == nullptr) return;
    std::lock_guard lock(capture->mutex_);
    capture->lines_.push_back(std::string(context.category ? context.category : "default") + ": " +
                              message.toStdString());
  }

  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
  QtMessageHandler previous_ = nullptr;
};

}  // namespace orrery::app::testing
