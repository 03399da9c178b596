// The open folder: a panel over the dimmed grid with the folder's name,
// which can be edited in place, and its apps in a grid of their own that
// scrolls when they are more than fit. A click beside the panel closes it;
// the name is kept on Return, when the title loses the keyboard and when
// the folder closes (the model commits it).
import QtQuick

Item {
    id: panel

    required property QtObject overlay
    // The drag controller: a reorder inside, and an app dragged out of the
    // panel, which then hides while the app goes on over the grid.
    property QtObject drag: null
    property real cellWidth: 150
    property real cellHeight: 150
    // How many rows of tiles fit before the panel scrolls.
    property int maxRows: 3

    readonly property real padding: 24
    readonly property real titleHeight: 56
    readonly property int columns: Math.max(panel.overlay.folderColumns, 1)

    // Where a tile's centre is, in the panel's coordinates.
    function tileCenter(index) {
        return Qt.point(box.x + apps.x + (index % columns + 0.5) * cellWidth,
                        box.y + apps.y + (Math.floor(index / columns) + 0.5) * cellHeight - apps.contentY)
    }

    visible: panel.overlay.openFolderID !== "" && !(panel.drag && panel.drag.folderHidden)

    // Where an app stands while another is dragged inside the folder.
    function shownSlot(index) {
        if (!panel.drag || !panel.drag.folderDragging)
            return index
        const from = panel.drag.folderFrom
        const remaining = index < from ? index : index - 1
        return remaining < panel.drag.folderGap ? remaining : remaining + 1
    }
    Binding {
        target: panel.drag
        when: panel.drag !== null
        property: "folderPanelFrame"
        value: Qt.rect(box.x, box.y, box.width, box.height)
    }
    Binding {
        target: panel.drag
        when: panel.drag !== null
        property: "folderGridFrame"
        value: Qt.rect(box.x + apps.x, box.y + apps.y - apps.contentY, apps.width,
                       Math.max(1, Math.ceil(apps.count / panel.columns)) * panel.cellHeight)
    }

    Rectangle {
        anchors.fill: parent
        color: "#a0000000"
        MouseArea {
            anchors.fill: parent
            acceptedButtons: Qt.LeftButton | Qt.RightButton
            onClicked: panel.overlay.closeFolder()
        }
    }

    Rectangle {
        id: box
        readonly property int rowsShown: Math.max(1, Math.min(Math.ceil(apps.count / panel.columns), panel.maxRows))
        width: panel.columns * panel.cellWidth + 2 * panel.padding
        height: panel.titleHeight + rowsShown * panel.cellHeight + 2 * panel.padding
        anchors.centerIn: parent
        radius: 28
        color: "#2f3744"
        border.color: "#30ffffff"

        // Clicks on the panel itself stay here.
        MouseArea {
            anchors.fill: parent
            acceptedButtons: Qt.LeftButton | Qt.RightButton
        }

        TextInput {
            id: title
            objectName: "folderTitle"
            x: panel.padding
            y: panel.padding
            width: parent.width - 2 * panel.padding
            height: panel.titleHeight - 16
            horizontalAlignment: TextInput.AlignHCenter
            verticalAlignment: TextInput.AlignVCenter
            color: "white"
            selectionColor: "#6080b0ff"
            font.pixelSize: 24
            font.weight: Font.DemiBold
            clip: true
            text: panel.overlay.folderNameDraft
            onTextEdited: panel.overlay.folderNameDraft = text
            onAccepted: {
                panel.overlay.commitFolderName()
                panel.overlay.requestFocus()
            }
            onActiveFocusChanged: if (!activeFocus) panel.overlay.commitFolderName()

            Rectangle {
                z: -1
                anchors.fill: parent
                anchors.margins: -4
                radius: 8
                color: "#20ffffff"
                visible: title.activeFocus
            }
        }

        GridView {
            id: apps
            x: panel.padding
            y: panel.padding + panel.titleHeight
            width: panel.columns * panel.cellWidth
            height: box.rowsShown * panel.cellHeight
            cellWidth: panel.cellWidth
            cellHeight: panel.cellHeight
            clip: true
            interactive: contentHeight > height
            boundsBehavior: Flickable.StopAtBounds
            // A folder opened again takes its tiles from those of the last one.
            reuseItems: true
            model: panel.overlay.folderApps
            delegate: Tile {
                required property int index
                required property string name
                required property string appID
                required property string iconSource
                width: panel.cellWidth
                height: panel.cellHeight
                iconSize: panel.overlay.iconSize
                label: name
                icon: iconSource
                clicksFromDrag: true
                readonly property int slot: panel.shownSlot(index)
                opacity: panel.drag && panel.drag.folderDragging && index === panel.drag.folderFrom ? 0 : 1
                transform: Translate {
                    x: (slot % panel.columns - index % panel.columns) * panel.cellWidth
                    y: (Math.floor(slot / panel.columns) - Math.floor(index / panel.columns)) * panel.cellHeight
                    Behavior on x {
                        enabled: panel.overlay.animations && panel.drag && panel.drag.lifted
                        NumberAnimation { duration: 200; easing.type: Easing.OutCubic }
                    }
                    Behavior on y {
                        enabled: panel.overlay.animations && panel.drag && panel.drag.lifted
                        NumberAnimation { duration: 200; easing.type: Easing.OutCubic }
                    }
                }
                focused: index === panel.overlay.focusedIndex
                trash: panel.overlay.trash
                trashID: appID
                onActivated: panel.overlay.launch(appID)
                onMenuRequested: (x, y) => {
                    const at = mapToItem(panel, x, y)
                    panel.overlay.openFolderAppMenu(index, at.x, at.y)
                }
            }
        }
    }

    Connections {
        target: panel.overlay
        function onRenameRequestChanged() {
            title.forceActiveFocus()
            title.selectAll()
        }
        function onFocusedIndexChanged() {
            if (panel.visible && panel.overlay.focusedIndex >= 0)
                apps.positionViewAtIndex(panel.overlay.focusedIndex, GridView.Contain)
        }
    }
}
