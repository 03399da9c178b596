#include "OrreryCore/drag/GridDrag.h"

#include <algorithm>
#include <cstddef>

namespace orrery {

namespace {

std::optional<Index> firstTopLevelApp(const Layout& layout, const std::string& appID) {
  for (std::size_t i = 0; i < layout.items.size(); ++i) {
    const std::string* id = layout.items[i].appID();
    if (id && *id == appID) return static_cast<Index>(i);
  }
  return std::nullopt;
}

const LayoutItem* itemAt(const Layout& layout, Index index) {
  if (index < 0 || index >= static_cast<Index>(layout.items.size())) return nullptr;
  return &layout.items[static_cast<std::size_t>(index)];
}

void applyItemDrop(Layout& layout, Index index, const DragPreview& preview) {
  if (!preview.mergeTarget) {
    // move() itself ignores out-of-range and equal indices.
    layout.move(index, preview.gap);
    return;
  }
  // The remaining items are the arrangement without the dragged one, so
  // targets behind it sit one further in the arrangement.
  const Index target = *preview.mergeTarget < index ? *preview.mergeTarget : *preview.mergeTarget + 1;
  const LayoutItem* onto = itemAt(layout, target);
  if (!onto) return;
  if (onto->isApp()) {
    layout.makeFolder(index, target, Folder::defaultName());
  } else {
    layout.add(index, onto->asFolder()->id);
  }
}

void applyFolderAppDrop(Layout& layout, const GridDrag::Source::FolderApp& source,
                        const DragPreview& preview) {
  if (!preview.mergeTarget) {
    layout.remove(source.appID, source.folder, preview.gap);
    return;
  }
  // The folder stayed in the grid, so remaining indices are arrangement
  // indices. Read the target before taking the app out: the source folder
  // may collapse or vanish and shift what comes after it.
  const LayoutItem* onto = itemAt(layout, *preview.mergeTarget);
  if (!onto) return;
  if (const std::string* ontoApp = onto->appID()) {
    const std::string targetApp = *ontoApp;
    layout.remove(source.appID, source.folder, *preview.mergeTarget);
    const auto dragged = firstTopLevelApp(layout, source.appID);
    const auto target = firstTopLevelApp(layout, targetApp);
    if (!dragged || !target) return;
    layout.makeFolder(*dragged, *target, Folder::defaultName());
    return;
  }
  const Uuid targetFolder = onto->asFolder()->id;
  if (targetFolder == source.folder) return;  // back onto its own folder
  layout.remove(source.appID, source.folder, *preview.mergeTarget);
  if (const auto dragged = firstTopLevelApp(layout, source.appID)) layout.add(*dragged, targetFolder);
}

}  // namespace

std::optional<GridDrag> GridDrag::make(const Layout& layout, Source source) {
  const auto count = static_cast<Index>(layout.items.size());
  if (const Index* index = source.itemIndex()) {
    const LayoutItem* item = itemAt(layout, *index);
    if (!item) return std::nullopt;
    LayoutItem dragged = *item;
    std::vector<LayoutItem> remaining = layout.items;
    remaining.erase(remaining.begin() + *index);
    DragPreview preview(count - 1, *index);  // the gap opens where the item was
    return GridDrag{std::move(source), layout, std::move(dragged), preview, std::move(remaining)};
  }

  const Source::FolderApp& app = *source.asFolderApp();
  for (Index i = 0; i < count; ++i) {
    const Folder* folder = layout.items[static_cast<std::size_t>(i)].asFolder();
    if (!folder || folder->id != app.folder) continue;
    if (std::find(folder->appIDs.begin(), folder->appIDs.end(), app.appID) == folder->appIDs.end()) continue;
    // The gap opens right after the folder the app leaves.
    DragPreview preview(count, i + 1);
    LayoutItem dragged = LayoutItem::app(app.appID);
    return GridDrag{std::move(source), layout, std::move(dragged), preview, layout.items};
  }
  return std::nullopt;
}

std::vector<LayoutItem> GridDrag::previewItems() const {
  std::vector<LayoutItem> items;
  items.reserve(remaining.size() + 1);
  const auto gap =
      static_cast<std::size_t>(std::clamp<Index>(preview.gap, 0, static_cast<Index>(remaining.size())));
  items.insert(items.end(), remaining.begin(), remaining.begin() + static_cast<std::ptrdiff_t>(gap));
  items.push_back(dragged);
  items.insert(items.end(), remaining.begin() + static_cast<std::ptrdiff_t>(gap), remaining.end());
  return items;
}

std::optional<Index> GridDrag::mergeTargetSlot() const {
  if (!preview.mergeTarget) return std::nullopt;
  return preview.slot(*preview.mergeTarget);
}

void GridDrag::hover(Index slot, DropZone zone) {
  const bool draggingApp = dragged.isApp();
  const auto count = static_cast<Index>(remaining.size());
  preview.hover(slot, zone, [&](Index target) { return draggingApp && target >= 0 && target < count; });
}

void GridDrag::hoverOutside(Index page, Index perPage) { preview.hoverOutside(page, perPage); }

void GridDrag::apply(Layout& layout) const {
  if (const Index* index = source.itemIndex()) {
    applyItemDrop(layout, *index, preview);
  } else {
    applyFolderAppDrop(layout, *source.asFolderApp(), preview);
  }
}

}  // namespace orrery
