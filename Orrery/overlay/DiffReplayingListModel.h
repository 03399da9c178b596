// DiffReplayingListModel: a list model whose rows mirror a vector that
// follows a LayoutDiff, announced row by row instead of reset.
//
// Neighbouring removals (which come last position first) and neighbouring
// insertions become one range each, so a scan that adds fifty apps at the
// end is one rowsInserted, not fifty. A model derives from it, keeps its
// rows in a vector and calls replayRows() with where new rows come from and
// what to do when a kept row changes; the begin…/end… bookkeeping is here,
// once for every model that follows an arrangement.
//
// Thread rules: like any model, the thread it lives on (the main thread).
#pragma once

#include <QAbstractListModel>

#include <algorithm>
#include <cstddef>
#include <vector>

#include "OrreryCore/arrangement/LayoutDiff.h"

namespace orrery::app {

class DiffReplayingListModel : public QAbstractListModel {
 public:
  using QAbstractListModel::QAbstractListModel;

 protected:
  // Replays `diff` on `rows`: inserted rows are `source[first..last]` (final
  // indices), and update(index, kind) handles a kept row whose content
  // changed.
  template <typename Row, typename Source, typename Update>
  void replayRows(std::vector<Row>& rows, const LayoutDiff& diff, const Source& source, Update&& update) {
    using Kind = LayoutChange::Kind;
    const std::vector<LayoutChange>& changes = diff.changes;
    std::size_t i = 0;
    while (i < changes.size()) {
      const LayoutChange& change = changes[i];
      std::size_t end = i + 1;
      switch (change.kind) {
        case Kind::removed: {
          while (end < changes.size() && changes[end].kind == Kind::removed &&
                 changes[end].from == changes[end - 1].from - 1)
            ++end;
          const Index first = changes[end - 1].from;
          beginRemoveRows({}, row(first), row(change.from));
          rows.erase(rows.begin() + offset(first), rows.begin() + offset(change.from) + 1);
          endRemoveRows();
          break;
        }
        case Kind::moved: {
          // Qt counts the destination before the row leaves its place.
          beginMoveRows({}, row(change.from), row(change.from), {},
                        row(change.to > change.from ? change.to + 1 : change.to));
          const auto from = rows.begin() + offset(change.from);
          const auto to = rows.begin() + offset(change.to);
          if (change.to > change.from)
            std::rotate(from, from + 1, to + 1);
          else
            std::rotate(to, from, from + 1);
          endMoveRows();
          break;
        }
        case Kind::inserted: {
          while (end < changes.size() && changes[end].kind == Kind::inserted &&
                 changes[end].to == changes[end - 1].to + 1)
            ++end;
          const Index last = changes[end - 1].to;
          beginInsertRows({}, row(change.to), row(last));
          rows.insert(rows.begin() + offset(change.to), source.begin() + offset(change.to),
                      source.begin() + offset(last) + 1);
          endInsertRows();
          break;
        }
        case Kind::folderChanged:
        case Kind::renamed:
          update(change.to, change.kind);
          break;
      }
      i = end;
    }
  }

  static int row(Index index) { return static_cast<int>(index); }
  static std::ptrdiff_t offset(Index index) { return static_cast<std::ptrdiff_t>(index); }
};

}  // namespace orrery::app
