// The overlay: search field on top, the grid (paged or scrolling) below it,
// page dots at the bottom, search results in place of the grid while
// searching. It only binds to the model and forwards input; every rule
// lives in OverlayModel and OverlayController.
import QtQuick

Item {
    id: root

    required property QtObject overlay
    required property QtObject controller
    // The BackgroundModel, handed over after the view is built.
    property QtObject background: null

    // Labels, dots and the search field take their colours from here:
    // light on pictures and dark colours, dark on light ones.
    palette.windowText: !background || background.isDark ? "white" : "#1d1d1f"
    palette.shadow: !background || background.isDark ? "#60000000" : "#40ffffff"

    // The grid area between the search field and the page dots.
    readonly property real sideMargin: Math.max(48, width * 0.08)
    readonly property real gridTop: search.y + search.height + 36
    readonly property real gridBottomMargin: 72
    readonly property real cellWidth: grid.width / Math.max(overlay.columns, 1)
    readonly property real cellHeight: grid.height / Math.max(overlay.rows, 1)
    readonly property int perPage: Math.max(overlay.columns, 1) * Math.max(overlay.rows, 1)

    // The drag controller (owned by the model) and where a grid item stands
    // while something is dragged: the others make room at the gap.
    readonly property QtObject drag: overlay.drag
    readonly property real pageStride: grid.width + sideMargin * 2
    function shownSlot(itemIndex) {
        if (!drag.gridDragging)
            return itemIndex
        const from = drag.draggedIndex
        const remaining = from < 0 || itemIndex < from ? itemIndex : itemIndex - 1
        return remaining < drag.gap ? remaining : remaining + 1
    }
    // A slot's place in the strip of pages (paged) or in the column (scrolling).
    function slotX(slot) {
        const columns = Math.max(overlay.columns, 1)
        if (overlay.scrollMode)
            return slot % columns * cellWidth
        return Math.floor(slot / perPage) * pageStride + slot % perPage % columns * cellWidth
    }
    function slotY(slot) {
        const columns = Math.max(overlay.columns, 1)
        return Math.floor((overlay.scrollMode ? slot : slot % perPage) / columns) * cellHeight
    }
    Binding { target: root.drag; property: "gridFrame"; value: Qt.rect(grid.x, grid.y, grid.width, grid.height) }
    Binding { target: root.drag; property: "overlayWidth"; value: root.width }

    opacity: controller.revealed ? 1 : 0
    Behavior on opacity {
        enabled: root.overlay.animations
        NumberAnimation { duration: 180; easing.type: Easing.OutCubic }
    }

    Background {
        anchors.fill: parent
        model: root.background
    }

    // A click on empty space hides the overlay; a right click offers what
    // can be done with the whole grid.
    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.LeftButton | Qt.RightButton
        onClicked: (click) => click.button === Qt.RightButton
                   ? root.overlay.openGridMenu(click.x, click.y) : root.controller.hide()
    }

    // The centre of a grid tile in the overlay's coordinates, for a menu
    // opened with the keyboard.
    function tileCenter(index) {
        const slot = root.overlay.scrollMode ? index : index % root.perPage
        const columns = Math.max(root.overlay.columns, 1)
        return Qt.point(grid.x + (slot % columns + 0.5) * root.cellWidth,
                        grid.y + (Math.floor(slot / columns) + 0.5) * root.cellHeight
                        - (root.overlay.scrollMode ? root.overlay.scrollOffset : 0))
    }

    SearchField {
        id: search
        overlay: root.overlay
        width: Math.min(320, root.width - 2 * root.sideMargin)
        anchors.horizontalCenter: parent.horizontalCenter
        y: 48
    }
    Binding { target: root.overlay; property: "searchTop"; value: search.y }

    Item {
        id: grid
        x: root.sideMargin
        y: root.gridTop
        width: root.width - 2 * root.sideMargin
        height: root.height - root.gridTop - root.gridBottomMargin
        clip: root.overlay.scrollMode
        visible: !root.overlay.isSearching

        // All pages side by side (paged) or one tall column (scrolling).
        Item {
            id: strip
            x: root.overlay.scrollMode ? 0 : -root.overlay.page * (grid.width + root.sideMargin * 2)
            y: root.overlay.scrollMode ? -root.overlay.scrollOffset : 0
            Behavior on x {
                enabled: root.overlay.animations
                NumberAnimation { duration: 260; easing.type: Easing.OutCubic }
            }
            Behavior on y {
                enabled: root.overlay.animations && root.overlay.scrollAnimated
                NumberAnimation { duration: 250; easing.type: Easing.OutCubic }
            }

            // Paged: one slot per page; a page's tiles exist while it is on
            // screen or next to it, those out of sight built in the
            // background, so a thousand apps cost three pages of tiles.
            Repeater {
                model: root.overlay.scrollMode ? 0 : root.overlay.pageCount
                delegate: Item {
                    id: pageSlot
                    required property int index
                    x: index * (grid.width + root.sideMargin * 2)
                    width: grid.width
                    height: grid.height

                    Loader {
                        anchors.fill: parent
                        active: Math.abs(pageSlot.index - root.overlay.page) <= 1
                        asynchronous: pageSlot.index !== root.overlay.page
                        sourceComponent: Item {
                            Repeater {
                                model: root.overlay.pageItems(pageSlot.index)
                                delegate: Tile {
                                    required property int index
                                    required property string name
                                    required property string appID
                                    required property string folderID
                                    required property string iconSource
                                    required property bool isFolder
                                    required property var folderIconSources

                                    // The tile's place in the whole arrangement, and
                                    // where it stands while something is dragged.
                                    readonly property int itemIndex: pageSlot.index * root.perPage + index
                                    readonly property int slot: root.shownSlot(itemIndex)
                                    x: root.slotX(slot) - pageSlot.index * root.pageStride
                                    y: root.slotY(slot)
                                    Behavior on x {
                                        enabled: root.overlay.animations && root.drag.lifted
                                        NumberAnimation { duration: 200; easing.type: Easing.OutCubic }
                                    }
                                    Behavior on y {
                                        enabled: root.overlay.animations && root.drag.lifted
                                        NumberAnimation { duration: 200; easing.type: Easing.OutCubic }
                                    }
                                    // The lifted tile keeps the pointer's grab.
                                    opacity: root.drag.gridDragging && itemIndex === root.drag.draggedIndex ? 0 : 1
                                    width: root.cellWidth
                                    height: root.cellHeight
                                    iconSize: root.overlay.iconSize
                                    label: name
                                    icon: iconSource
                                    folderIcons: isFolder ? folderIconSources : []
                                    clicksFromDrag: true
                                    dropTarget: root.drag.gridDragging && slot === root.drag.mergeSlot
                                    focused: itemIndex === root.overlay.focusedIndex
                                                 && root.overlay.openFolderID === ""
                                    trash: root.overlay.trash
                                    trashID: isFolder ? "" : appID
                                    onActivated: isFolder ? root.overlay.openFolder(folderID)
                                                          : root.overlay.launch(appID)
                                    onMenuRequested: (x, y) => {
                                        const at = mapToItem(root, x, y)
                                        root.overlay.openItemMenu(itemIndex, at.x, at.y)
                                    }
                                }
                            }
                        }
                    }
                }
            }

            // Scrolling: one tall column of every item; tiles exist only
            // near the part in view.
            Repeater {
                model: root.overlay.scrollMode ? root.overlay.items : null
                delegate: Item {
                    id: slotItem
                    required property int index
                    required property string name
                    required property string appID
                    required property string folderID
                    required property string iconSource
                    required property bool isFolder
                    required property var folderIconSources

                    readonly property int slot: root.shownSlot(index)
                    x: root.slotX(slot)
                    y: root.slotY(slot)
                    Behavior on x {
                        enabled: root.overlay.animations && root.drag.lifted
                        NumberAnimation { duration: 200; easing.type: Easing.OutCubic }
                    }
                    Behavior on y {
                        enabled: root.overlay.animations && root.drag.lifted
                        NumberAnimation { duration: 200; easing.type: Easing.OutCubic }
                    }
                    opacity: root.drag.gridDragging && index === root.drag.draggedIndex ? 0 : 1
                    width: root.cellWidth
                    height: root.cellHeight

                    Loader {
                        anchors.fill: parent
                        active: Math.abs(slotItem.y - root.overlay.scrollOffset) < 2 * grid.height
                        sourceComponent: Tile {
                            iconSize: root.overlay.iconSize
                            label: slotItem.name
                            icon: slotItem.iconSource
                            folderIcons: slotItem.isFolder ? slotItem.folderIconSources : []
                            clicksFromDrag: true
                            dropTarget: root.drag.gridDragging && slotItem.slot === root.drag.mergeSlot
                            focused: slotItem.index === root.overlay.focusedIndex
                                         && root.overlay.openFolderID === ""
                            trash: root.overlay.trash
                            trashID: slotItem.isFolder ? "" : slotItem.appID
                            onActivated: slotItem.isFolder ? root.overlay.openFolder(slotItem.folderID)
                                                           : root.overlay.launch(slotItem.appID)
                            onMenuRequested: (x, y) => {
                                const at = mapToItem(root, x, y)
                                root.overlay.openItemMenu(slotItem.index, at.x, at.y)
                            }
                        }
                    }
                }
            }
        }
    }

    // Search results: the same tiles, best match first.
    Item {
        id: results
        anchors.fill: grid
        visible: root.overlay.isSearching

        Repeater {
            model: root.overlay.searchResults
            delegate: Tile {
                required property int index
                required property string name
                required property string appID
                required property string iconSource

                readonly property int column: index % Math.max(root.overlay.columns, 1)
                readonly property int row: Math.floor(index / Math.max(root.overlay.columns, 1))
                visible: row < root.overlay.rows
                x: column * root.cellWidth
                y: row * root.cellHeight
                width: root.cellWidth
                height: root.cellHeight
                iconSize: root.overlay.iconSize
                label: name
                icon: iconSource
                highlighted: index === 0
                trash: root.overlay.trash
                trashID: appID
                onActivated: root.overlay.launch(appID)
                onMenuRequested: (x, y) => {
                    const at = mapToItem(root, x, y)
                    root.overlay.openResultMenu(index, at.x, at.y)
                }
            }
        }

        Text {
            anchors.centerIn: parent
            visible: root.overlay.isSearching && root.overlay.resultCount === 0
            text: qsTr("No apps found")
            color: root.palette.windowText
            opacity: 0.8
            font.pixelSize: 22
        }
    }

    PageDots {
        visible: !root.overlay.scrollMode && !root.overlay.isSearching && root.overlay.pageCount > 1
        count: root.overlay.pageCount
        current: root.overlay.page
        // While an item is held the page it is carried to stands out.
        dragging: root.drag.lifted
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottom: parent.bottom
        // Above the selection bar while it is there.
        anchors.bottomMargin: selectionBar.visible ? 70 : 32
        onChosen: (page) => root.overlay.goTo(page)
    }

    Text {
        id: message
        visible: root.overlay.message !== ""
        text: root.overlay.message
        color: "white"
        font.pixelSize: 15
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 56
        Rectangle {
            z: -1
            anchors.fill: parent
            anchors.margins: -10
            radius: 8
            color: "#b0402020"
        }
    }

    // Folders, menus and the sort's sheet and undo offer lie above the grid.
    // They are built after the first frame, out of the way of the first
    // show, or at once when one of them is needed before that.
    property bool firstFrameShown: false
    Connections {
        target: root.controller
        function onShown() { root.firstFrameShown = true }
    }

    Loader {
        readonly property bool needed: root.overlay.canUndoSort
        active: needed || root.firstFrameShown
        asynchronous: !needed
        x: root.width - width - 24
        y: search.y - 2
        sourceComponent: SortUndoBar { overlay: root.overlay }
    }
    Loader {
        id: folderPanel
        readonly property bool needed: root.overlay.openFolderID !== ""
        anchors.fill: parent
        active: needed || root.firstFrameShown
        asynchronous: !needed
        sourceComponent: FolderPanel {
            overlay: root.overlay
            drag: root.drag
            cellWidth: root.cellWidth
            // Tall enough for a whole label: the panel clips its rows.
            cellHeight: Math.max(root.cellHeight, root.overlay.iconSize + 13 + 18 + 12)
            maxRows: Math.max(1, Math.min(root.overlay.rows, Math.floor((root.height - 200) / root.cellHeight)))
        }
    }
    // The lifted item, under the pointer where it was grabbed.
    Tile {
        id: lifted
        visible: root.drag.lifted
        width: root.cellWidth
        height: root.cellHeight
        x: root.drag.pointerX - root.drag.grabOffsetX - width / 2
        y: root.drag.pointerY - root.drag.grabOffsetY - height / 2
        scale: 1.08
        opacity: 0.92
        iconSize: root.overlay.iconSize
        label: root.drag.liftedTile.name ?? ""
        icon: root.drag.liftedTile.icon ?? ""
        folderIcons: root.drag.liftedTile.folderIcons ?? []
        enabled: false
    }

    // Every press over the grid and the open folder, mouse or touch, goes to
    // the drag controller, which tells clicks from drags. The handler only
    // watches (a passive grab): the tiles below still show their press, and
    // the gesture goes on when the pressed tile is unloaded by a page flip.
    Item {
        anchors.fill: parent
        enabled: !root.overlay.menuOpen && !root.controller.sortSheetShown
        PointHandler {
            id: pointer
            acceptedButtons: Qt.LeftButton
            property point start
            property point last
            onActiveChanged: {
                if (active) {
                    start = point.pressPosition
                    last = point.position
                    root.drag.pointerMoved(last.x, last.y, start.x, start.y)
                } else {
                    root.drag.pointerReleased(last.x, last.y, start.x, start.y)
                }
            }
            onPointChanged: {
                if (!active)
                    return
                last = point.position
                root.drag.pointerMoved(last.x, last.y, start.x, start.y)
            }
            onCanceled: root.drag.pointerCancelled()
        }
    }

    Loader {
        readonly property bool needed: root.overlay.menuOpen
        anchors.fill: parent
        active: needed || root.firstFrameShown
        asynchronous: !needed
        sourceComponent: ContextMenu {
            overlay: root.overlay
            anchor: !root.overlay.menuAtFocus ? Qt.point(root.overlay.menuX, root.overlay.menuY)
                    : root.overlay.isSearching ? Qt.point(grid.x + root.cellWidth / 2, grid.y + root.cellHeight / 2)
                    : root.overlay.openFolderID !== "" && folderPanel.item
                      ? folderPanel.item.tileCenter(root.overlay.focusedIndex)
                    : root.tileCenter(root.overlay.focusedIndex)
        }
    }
    SelectionBar {
        id: selectionBar
        overlay: root.overlay
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 18
    }
    Loader {
        readonly property bool needed: root.controller.sortSheetShown
        anchors.fill: parent
        active: needed || root.firstFrameShown
        asynchronous: !needed
        sourceComponent: SortSheet { controller: root.controller }
    }
    TrashSheet {
        anchors.fill: parent
        trash: root.overlay.trash
        sheetTop: root.controller.sheetTop
    }
}
