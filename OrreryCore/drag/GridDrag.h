// GridDrag: one drag over the main grid, from lift to drop.
//
// The arrangement is not touched while the user drags. A GridDrag keeps the
// arrangement as it was when the drag started, the dragged item, the items
// that stay in the grid and a DragPreview of where the dragged item would
// land. The view draws previewItems(); on drop, apply() turns the preview
// into one arrangement operation (or none), so what the user saw is what
// the arrangement becomes.
//
// A drag starts either from a top-level item (which leaves the grid while
// it is dragged) or from an app dragged out of an open folder (the folder
// stays in the grid; the app joins the grid as an extra item right after
// it). Folders are never merged into anything; apps may be dropped onto an
// app (a new folder) or onto a folder (the app joins it).
//
// Thread rules: a plain value. The drag controller owns it on the main
// thread and applies it only to the arrangement it started from.
#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "OrreryCore/arrangement/Layout.h"
#include "OrreryCore/base/Uuid.h"
#include "OrreryCore/drag/DragPreview.h"
#include "OrreryCore/drag/DropZone.h"

namespace orrery {

struct GridDrag {
  // Where the dragged item comes from.
  class Source {
   public:
    struct FolderApp {
      std::string appID;
      Uuid folder;
      friend bool operator==(const FolderApp&, const FolderApp&) = default;
    };

    // The top-level item at `index` of the arrangement.
    static Source item(Index index) { return Source(index); }
    // The app `appID` dragged out of the open folder `folder`.
    static Source folderApp(std::string appID, Uuid folder) {
      return Source(FolderApp{std::move(appID), folder});
    }

    bool isItem() const { return value_.index() == 0; }
    bool isFolderApp() const { return value_.index() == 1; }
    // Null when the source is of the other kind.
    const Index* itemIndex() const { return std::get_if<Index>(&value_); }
    const FolderApp* asFolderApp() const { return std::get_if<FolderApp>(&value_); }

    friend bool operator==(const Source&, const Source&) = default;

   private:
    explicit Source(Index index) : value_(index) {}
    explicit Source(FolderApp app) : value_(std::move(app)) {}
    std::variant<Index, FolderApp> value_;
  };

  Source source;
  Layout base;                        // the arrangement when the drag started
  LayoutItem dragged;                 // the item under the pointer
  DragPreview preview;                // where it would land
  std::vector<LayoutItem> remaining;  // what the grid shows besides it

  // Starts a drag; nothing when the source names no item: an index outside
  // the items, or an app that is not in the first folder with that id.
  static std::optional<GridDrag> make(const Layout& layout, Source source);

  // What the grid shows: the remaining items with the dragged one at the gap.
  std::vector<LayoutItem> previewItems() const;
  Index draggedSlot() const { return preview.gap; }
  // The merge target's slot in the preview grid.
  std::optional<Index> mergeTargetSlot() const;

  // As DragPreview::hover/hoverOutside, with this grid's merge rule: only an
  // app can be merged, onto any remaining item.
  void hover(Index slot, DropZone zone);
  void hoverOutside(Index page, Index perPage);

  // Applies the drop to `layout`, which should be `base`: a move, a new
  // folder, an app added to a folder, or an app taken out of its folder
  // (possibly straight into another one). Anything that no longer fits the
  // arrangement changes nothing.
  void apply(Layout& layout) const;

  friend bool operator==(const GridDrag&, const GridDrag&) = default;
};

}  // namespace orrery
