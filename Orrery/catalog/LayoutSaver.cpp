#include "Orrery/catalog/LayoutSaver.h"

#include <QCoreApplication>
#include <QEvent>
#include <QMetaObject>

namespace orrery::app {

LayoutSaver::LayoutSaver(LayoutStore store, QObject* parent)
    : QObject(parent), store_(std::move(store)), worker_([this] { run(); }) {}

LayoutSaver::~LayoutSaver() {
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_one();
  // The worker saves what is still waiting before it ends; outcomes it
  // posts after this point are dropped with this object, nobody is left to
  // show them.
  worker_.join();
}

void LayoutSaver::save(Layout layout) {
  {
    std::lock_guard lock(mutex_);
    waiting_ = std::move(layout);
  }
  wake_.notify_one();
}

void LayoutSaver::flush() {
  {
    std::unique_lock lock(mutex_);
    idle_.wait(lock, [this] { return !waiting_ && !running_; });
  }
  // The outcomes are posted to this thread; hand them out now.
  QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
}

std::uint64_t LayoutSaver::savesStarted() const {
  std::lock_guard lock(mutex_);
  return started_;
}

void LayoutSaver::run() {
  std::unique_lock lock(mutex_);
  for (;;) {
    wake_.wait(lock, [this] { return waiting_ || stopping_; });
    if (!waiting_) return;  // stopping, and everything is saved
    Layout layout = std::move(*waiting_);
    waiting_.reset();
    running_ = true;
    ++started_;
    lock.unlock();

    Outcome outcome = store_.save(layout);
    QMetaObject::invokeMethod(
        this, [this, outcome = std::move(outcome)] { deliver(outcome); }, Qt::QueuedConnection);

    lock.lock();
    running_ = false;
    if (!waiting_) idle_.notify_all();
  }
}

void LayoutSaver::deliver(Outcome outcome) { emit saved(outcome); }

}  // namespace orrery::app
