// OverlayModel: what the overlay shows and what the user asks of it, for
// the views.
//
// It mirrors the arrangement, the installed apps and the settings
// (sync(), called whenever one of them changes) into an OverlayState and a
// handful of properties that QML binds to; each property announces itself
// only when its value really changed, so a rescan that changes nothing
// redraws nothing. The grid's rows come from `items` (every top-level item,
// one row each, in grid order, moved and updated row by row) and the search
// results from `searchResults` (the best page of them).
//
// Input arrives as intentions (a query, a page, Esc, Return, a launch) and
// leaves as state changes or as launchRequested(), which the controller
// turns into a launch; nothing here touches a window, so every rule can be
// tested without one.
//
// Thread rules: main thread only.
#pragma once

#include <QObject>
#include <QString>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "Orrery/catalog/ArrangementController.h"
#include "Orrery/overlay/ArrangementListModel.h"
#include "Orrery/overlay/SearchResultsModel.h"
#include "OrreryCore/catalog/AppInfo.h"
#include "OrreryCore/overlay/OverlayState.h"
#include "OrreryCore/overlay/ScrollGrid.h"
#include "OrreryCore/settings/Settings.h"

namespace orrery::app {

class OverlayModel final : public QObject {
  Q_OBJECT
  Q_PROPERTY(QString query READ query WRITE setQuery NOTIFY queryChanged)
  Q_PROPERTY(bool isSearching READ isSearching NOTIFY isSearchingChanged)
  Q_PROPERTY(int page READ page NOTIFY pageChanged)
  Q_PROPERTY(int pageCount READ pageCount NOTIFY pageCountChanged)
  Q_PROPERTY(int columns READ columns NOTIFY gridChanged)
  Q_PROPERTY(int rows READ rows NOTIFY gridChanged)
  Q_PROPERTY(double iconSize READ iconSize NOTIFY gridChanged)
  Q_PROPERTY(bool animations READ animations NOTIFY animationsChanged)
  Q_PROPERTY(bool scrollMode READ scrollMode NOTIFY scrollModeChanged)
  Q_PROPERTY(int focusRequest READ focusRequest NOTIFY focusRequestChanged)
  Q_PROPERTY(QString openFolderID READ openFolderID NOTIFY openFolderIDChanged)
  Q_PROPERTY(bool canRearrange READ canRearrange NOTIFY canRearrangeChanged)
  Q_PROPERTY(double scrollOffset READ scrollOffset NOTIFY scrollChanged)
  Q_PROPERTY(bool scrollAnimated READ scrollAnimated NOTIFY scrollChanged)
  Q_PROPERTY(QString message READ message NOTIFY messageChanged)
  Q_PROPERTY(QObject* items READ items CONSTANT)
  Q_PROPERTY(QObject* searchResults READ searchResults CONSTANT)
  Q_PROPERTY(int resultCount READ resultCount NOTIFY resultCountChanged)

 public:
  using AppMap = std::unordered_map<std::string, AppInfo>;

  // The items follow `arrangement` row by row; it must outlive the model.
  explicit OverlayModel(ArrangementController& arrangement, QObject* parent = nullptr);

  // Mirrors the arrangement, the apps and the settings.
  void sync(const Layout& layout, const AppMap& apps, const Settings& settings);

  QString query() const { return QString::fromStdString(state_.query()); }
  // Entering a search closes an open folder; the results follow every change.
  void setQuery(const QString& query);
  bool isSearching() const;

  int page() const { return static_cast<int>(state_.page()); }
  int pageCount() const { return static_cast<int>(state_.pageCount()); }
  Q_INVOKABLE void goTo(int page);
  Q_INVOKABLE void nextPage() { goTo(page() + 1); }
  Q_INVOKABLE void previousPage() { goTo(page() - 1); }

  int columns() const { return static_cast<int>(columns_); }
  int rows() const { return static_cast<int>(rows_); }
  double iconSize() const { return iconSize_; }
  bool animations() const { return animations_; }
  bool scrollMode() const { return layoutMode_ == LayoutMode::scroll; }

  // Bumped when the search field must take the keyboard again.
  int focusRequest() const { return focusRequest_; }
  void requestFocus();

  QString openFolderID() const { return openFolderID_; }
  // Opens the folder when it exists.
  Q_INVOKABLE void openFolder(const QString& folderID);
  Q_INVOKABLE void closeFolder();

  // Whether a drag may rearrange the grid: never while searching.
  bool canRearrange() const { return !isSearching(); }

  // Scroll mode: the viewport is told by the view; offsets stay within the
  // content.
  Q_INVOKABLE void setViewport(double viewportHeight, double contentHeight);
  Q_INVOKABLE void scroll(double by, bool animated);
  Q_INVOKABLE void resetScroll();
  double scrollOffset() const { return scroll_.offset; }
  bool scrollAnimated() const { return scrollAnimated_; }
  const ScrollMetrics& scrollMetrics() const { return scroll_; }
  // One "page" of scrolling: what Page Up/Down and the arrows move by.
  double scrollPageStep() const;

  // Esc: closes an open folder first; true when it was used that way, false
  // when the overlay itself should hide.
  Q_INVOKABLE bool handleEscape();
  // Return: launches the first search result, if any (with nothing typed,
  // the first app of the grid).
  Q_INVOKABLE void launchOnEnter();
  // A click on an app tile or result.
  Q_INVOKABLE void launch(const QString& appID);

  // A sentence for the user (a launch that failed); empty when all is well.
  QString message() const { return message_; }
  void setMessage(const QString& message);

  int resultCount() const { return static_cast<int>(searchResults_.results().size()); }
  // How both lists show an app's icon.
  void setIconSource(const std::function<QString(const AppInfo&)>& iconSource);

  // The items of one page of the grid, following every change like
  // `items`. Made on first use and kept by the model.
  Q_INVOKABLE QObject* pageItems(int page);
  ArrangementListModel& pageItemsModel(int page) { return *static_cast<ArrangementListModel*>(pageItems(page)); }

  QObject* items() { return &items_; }
  QObject* searchResults() { return &searchResults_; }
  ArrangementListModel& itemsModel() { return items_; }
  SearchResultsModel& searchResultsModel() { return searchResults_; }
  const OverlayState& state() const { return state_; }

 signals:
  void queryChanged();
  void isSearchingChanged();
  void pageChanged();
  void pageCountChanged();
  void gridChanged();
  void animationsChanged();
  void scrollModeChanged();
  void focusRequestChanged();
  void openFolderIDChanged();
  void canRearrangeChanged();
  void scrollChanged();
  void messageChanged();
  void resultCountChanged();
  // The user chose an app to open.
  void launchRequested(const orrery::AppInfo& app);

 private:
  void refreshResults();
  // Announces page and page count after the state changed under them.
  void announcePaging(std::int64_t oldPage, std::int64_t oldCount);
  void setScrollOffset(double offset, bool animated);
  std::vector<AppInfo> appList() const;

  OverlayState state_;
  AppMap apps_;
  std::int64_t columns_ = 0;
  std::int64_t rows_ = 0;
  double iconSize_ = 0;
  bool animations_ = true;
  LayoutMode layoutMode_ = LayoutMode::paged;
  int focusRequest_ = 0;
  QString openFolderID_;
  ScrollMetrics scroll_;
  bool scrollAnimated_ = false;
  QString message_;

  void forEachItemModel(const std::function<void(ArrangementListModel&)>& action);

  ArrangementController& arrangement_;
  ArrangementListModel items_;
  // Children of the model: QML must not take over what it is handed.
  std::map<int, ArrangementListModel*> pages_;
  std::function<QString(const AppInfo&)> iconSource_;
  SearchResultsModel searchResults_;
};

}  // namespace orrery::app
