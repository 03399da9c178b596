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
// Edits of the arrangement (renaming, hiding, taking an app out of its
// folder, dissolving a folder, sorting and its undo) go through the
// ArrangementController's mutate(), which saves them; the open folder's
// apps (`folderApps`) and the sort's undo offer (`canUndoSort`) follow the
// controller's layout directly. The keyboard walks the tiles through
// `focusedIndex` (in the open folder when there is one, else in the grid),
// and a context menu is a list of entries computed here for the item it
// was opened on.
//
// Thread rules: main thread only.
#pragma once

#include <QObject>
#include <QString>
#include <QVariantList>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "Orrery/base/Clock.h"
#include "Orrery/catalog/ArrangementController.h"
#include "Orrery/drag/DragController.h"
#include "Orrery/overlay/ArrangementListModel.h"
#include "Orrery/overlay/FolderAppsModel.h"
#include "Orrery/overlay/SearchResultsModel.h"
#include "Orrery/trash/TrashFlow.h"
#include "OrreryCore/arrangement/SortUndo.h"
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
  Q_PROPERTY(
      QString folderNameDraft READ folderNameDraft WRITE setFolderNameDraft NOTIFY folderNameDraftChanged)
  Q_PROPERTY(QObject* folderApps READ folderApps CONSTANT)
  Q_PROPERTY(int folderColumns READ folderColumns NOTIFY folderColumnsChanged)
  Q_PROPERTY(int renameRequest READ renameRequest NOTIFY renameRequestChanged)
  Q_PROPERTY(int focusedIndex READ focusedIndex NOTIFY focusedIndexChanged)
  Q_PROPERTY(bool canSortByName READ canSortByName NOTIFY canSortByNameChanged)
  Q_PROPERTY(bool canUndoSort READ canUndoSort NOTIFY canUndoSortChanged)
  Q_PROPERTY(bool menuOpen READ menuOpen NOTIFY menuChanged)
  Q_PROPERTY(QVariantList menuEntries READ menuEntries NOTIFY menuChanged)
  Q_PROPERTY(int menuIndex READ menuIndex NOTIFY menuChanged)
  Q_PROPERTY(bool menuAtFocus READ menuAtFocus NOTIFY menuChanged)
  Q_PROPERTY(double menuX READ menuX NOTIFY menuChanged)
  Q_PROPERTY(double menuY READ menuY NOTIFY menuChanged)
  Q_PROPERTY(double searchTop READ searchTop WRITE setSearchTop NOTIFY searchTopChanged)
  Q_PROPERTY(QObject* trash READ trash CONSTANT)
  Q_PROPERTY(QObject* drag READ dragObject CONSTANT)

 public:
  using AppMap = std::unordered_map<std::string, AppInfo>;

  // What a context menu entry does.
  enum class MenuAction { open, hide, removeFromFolder, moveToTrash, rename, dissolveFolder, sortByName };
  struct MenuEntry {
    QString title;
    MenuAction action;
    bool enabled = true;
    friend bool operator==(const MenuEntry&, const MenuEntry&) = default;
  };

  // The items follow `arrangement` row by row; it must outlive the model.
  // The drag controller's long press and ticker run on `clock`, which must
  // outlive the model too; without one they run on Qt's timers.
  explicit OverlayModel(ArrangementController& arrangement, QObject* parent = nullptr);
  OverlayModel(ArrangementController& arrangement, Clock& clock, QObject* parent = nullptr);
  ~OverlayModel() override;

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
  Q_INVOKABLE void requestFocus();

  QString openFolderID() const { return openFolderID_; }
  // Opens the folder when it exists, with its name as the title's draft; a
  // folder open before is closed first.
  Q_INVOKABLE void openFolder(const QString& folderID);
  // Commits the title's draft, then closes.
  Q_INVOKABLE void closeFolder();
  // The open folder's title as it is being edited.
  QString folderNameDraft() const { return folderNameDraft_; }
  void setFolderNameDraft(const QString& draft);
  // Renames the open folder to the draft, trimmed, or to the default name
  // when nothing but spaces is left; the draft shows what was stored.
  Q_INVOKABLE void commitFolderName();
  // The open folder's apps, for its panel, and how many columns it shows.
  QObject* folderApps() { return &folderApps_; }
  FolderAppsModel& folderAppsModel() { return folderApps_; }
  int folderColumns() const;
  // Bumped when the open folder's title should take the keyboard ("Rename").
  int renameRequest() const { return renameRequest_; }

  // Whether a drag may rearrange the grid: never while searching or
  // ticking apps.
  bool canRearrange() const { return !isSearching() && !trash_.selecting(); }

  // The selection mode for the Trash (TrashFlow holds it): a click ticks
  // instead of launching, Return launches nothing, Esc leaves the mode.
  QObject* trash() { return &trash_; }
  TrashFlow& trashFlow() { return trash_; }
  const TrashSelection& selection() const { return trash_.selection(); }
  bool isTrashing() const { return trash_.isTrashing(); }
  void enterSelection(const std::optional<std::string>& preselect = std::nullopt) {
    trash_.enterSelection(QString::fromStdString(preselect.value_or(std::string())));
  }
  void toggleSelection(const std::string& id) { trash_.toggleSelection(QString::fromStdString(id)); }
  void exitSelection() { trash_.exitSelection(); }
  void requestTrash() { trash_.requestTrash(); }
  void finishTrash(std::int64_t session) { trash_.finishTrash(session); }
  bool canMoveSelectionToFolder() const { return trash_.canMoveSelectionToFolder(); }
  // The new folder opens, so its name can be typed at once.
  Q_INVOKABLE void makeFolderFromSelection();
  QVariantList foldersByName() const { return trash_.foldersByName(); }

  // Arrangement edits, each saved at once.
  Q_INVOKABLE void hide(const QString& appID);
  Q_INVOKABLE void removeFromFolder(const QString& appID);
  Q_INVOKABLE void dissolveFolder(const QString& folderID);

  // Sorting by name, with one step of undo while nothing else changed the
  // arrangement since.
  bool canSortByName() const;
  Q_INVOKABLE void sortByName();
  bool canUndoSort() const { return sortUndo_.has_value(); }
  Q_INVOKABLE void undoSort();
  const std::optional<SortUndo>& sortUndo() const { return sortUndo_; }
  // Whether a change of the arrangement is also sent to the user's other
  // machines (the sort's confirmation says so).
  bool syncEnabled() const { return arrangement_.syncEnabled(); }

  // Keyboard focus on a tile: an index into the open folder's apps, or into
  // the grid's items; -1 while the search field has the keyboard.
  int focusedIndex() const { return focusedIndex_; }
  // Moves the focus by columns and rows; false when the keys should do
  // what they do without a focused tile (turn pages, stay in the text).
  bool moveFocus(int across, int down);
  // Opens the focused tile: launches an app, opens a folder. False when no
  // tile has the focus.
  bool activateFocused();

  // Context menus: on a grid item, on an app of the open folder, on a
  // search result, on the empty grid, or on the focused tile (the Menu key;
  // while searching, the result Return would open).
  Q_INVOKABLE void openItemMenu(int index, double x, double y);
  Q_INVOKABLE void openResultMenu(int index, double x, double y);
  Q_INVOKABLE void openFolderAppMenu(int index, double x, double y);
  Q_INVOKABLE void openGridMenu(double x, double y);
  void openMenuAtFocus();
  Q_INVOKABLE void closeMenu();
  Q_INVOKABLE void chooseMenuEntry(int index);
  // Up and down in an open menu, over the enabled entries.
  void moveMenuSelection(int by);
  const std::vector<MenuEntry>& menu() const { return menu_; }
  bool menuOpen() const { return !menu_.empty(); }
  QVariantList menuEntries() const;
  int menuIndex() const { return menuIndex_; }
  bool menuAtFocus() const { return menuAtFocus_; }
  double menuX() const { return menuX_; }
  double menuY() const { return menuY_; }

  // The top of the search field, told by the view: sheets hang below it.
  double searchTop() const { return searchTop_; }
  void setSearchTop(double top);

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

  // Esc: closes an open menu, then an open folder; true when it was used
  // that way, false when the overlay itself should hide.
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
  ArrangementListModel& pageItemsModel(int page) {
    return *static_cast<ArrangementListModel*>(pageItems(page));
  }

  QObject* items() { return &items_; }
  QObject* searchResults() { return &searchResults_; }
  ArrangementListModel& itemsModel() { return items_; }
  SearchResultsModel& searchResultsModel() { return searchResults_; }
  const OverlayState& state() const { return state_; }

  // The pointer gestures over the grid and the open folder.
  DragController& drag() { return *drag_; }
  QObject* dragObject() { return drag_.get(); }
  // The arrangement the model follows; drops change it through mutate().
  ArrangementController& arrangement() { return arrangement_; }
  const ArrangementController& arrangement() const { return arrangement_; }

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
  void folderNameDraftChanged();
  void folderColumnsChanged();
  void renameRequestChanged();
  void focusedIndexChanged();
  void canSortByNameChanged();
  void canUndoSortChanged();
  void menuChanged();
  void searchTopChanged();
  // "Sort by Name …" was chosen: the controller asks for confirmation.
  void sortRequested();
  // The user chose an app to open.
  void launchRequested(const orrery::AppInfo& app);

 private:
  void refreshResults();
  // Announces page and page count after the state changed under them.
  void announcePaging(std::int64_t oldPage, std::int64_t oldCount);
  void setScrollOffset(double offset, bool animated);
  std::vector<AppInfo> appList() const;
  // Follows a change of the arrangement: the open folder, the undo offer,
  // the focus.
  void arrangementChanged();
  const Folder* findFolder(const QString& folderID) const;
  const Folder* currentFolder() const { return findFolder(openFolderID_); }
  // The number of tiles the focus walks over, and how many a row holds.
  int focusCount() const;
  void setFocusedIndex(int index);
  void showMenu(std::vector<MenuEntry> entries, double x, double y, bool atFocus);
  void refreshSortAbility();

  struct MenuTarget {
    std::string appID;  // an app's menu
    QString folderID;   // a folder's menu, or the folder the app is in
  };

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
  FolderAppsModel folderApps_;
  QString folderNameDraft_;
  int renameRequest_ = 0;
  int focusedIndex_ = -1;
  std::optional<SortUndo> sortUndo_;
  bool canSort_ = false;
  std::vector<MenuEntry> menu_;
  MenuTarget menuTarget_;
  int menuIndex_ = 0;
  bool menuAtFocus_ = false;
  double menuX_ = 0;
  double menuY_ = 0;
  double searchTop_ = 0;
  TrashFlow trash_;
  std::unique_ptr<Clock> ownClock_;
  std::unique_ptr<DragController> drag_;
};

}  // namespace orrery::app
