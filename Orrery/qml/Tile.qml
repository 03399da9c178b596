// One app or folder in the grid: the icon, a gap, the name below it, all
// centred in the cell. A folder shows up to nine of its apps' icons.
import QtQuick

Item {
    id: tile

    property real iconSize: 96
    property string label
    property string icon
    property var folderIcons: []
    property bool active: true
    property bool highlighted: false
    // The keyboard is on this tile.
    property bool focused: false
    // The selection mode for the Trash (the model's TrashFlow) and the app
    // this tile stands for; a folder has none and shows no tick box.
    property QtObject trash: null
    property string trashID: ""
    readonly property bool selecting: trash !== null && trash.selecting && trashID !== ""
    readonly property bool selected: selecting && trash.revision >= 0 && trash.isSelected(trashID)
    readonly property string protectedReason: selecting && trash.revision >= 0 ? trash.protectedReason(trashID) : ""
    // Left clicks are told by the drag controller, which tells a click from
    // a drag; the tile then only shows the press.
    property bool clicksFromDrag: false
    // A dragged app would be dropped onto this tile: an app shows the folder
    // it would become, a folder that it would take the app.
    property bool dropTarget: false
    property bool isFolderTile: folderIcons.length > 0

    signal activated()
    // A right click, at that point of the tile.
    signal menuRequested(real x, real y)

    readonly property real labelSpacing: 13
    readonly property real labelHeight: 18
    // The icon as drawn: smaller than asked when the cell is too low for it
    // and its name (a small screen with many rows), so that a name never
    // runs into the row below. The image keeps its asked-for pixel size.
    readonly property real shownIconSize: Math.max(16, Math.min(iconSize, height - labelSpacing - labelHeight - 10))
    readonly property real hitWidth: Math.min(shownIconSize + 84, width)
    readonly property real hitHeight: Math.min(shownIconSize + labelSpacing + labelHeight, height)

    Rectangle {
        id: hover
        x: (tile.width - tile.hitWidth) / 2
        y: (tile.height - tile.hitHeight) / 2 - 6
        width: tile.hitWidth
        height: tile.hitHeight + 12
        radius: 14
        color: tile.palette.windowText
        opacity: tile.highlighted || tile.focused ? 0.16 : (mouse.containsMouse ? 0.10 : 0)
        Behavior on opacity { NumberAnimation { duration: 90 } }
    }
    Rectangle {
        anchors.fill: hover
        visible: tile.focused
        radius: hover.radius
        color: "transparent"
        border.width: 2
        border.color: "#d0ffffff"
    }

    // The folder an app would become when the dragged one is dropped on it.
    Rectangle {
        x: iconBox.x - tile.shownIconSize * 0.08
        y: iconBox.y - tile.shownIconSize * 0.08
        width: tile.shownIconSize * 1.16
        height: width
        radius: width * 0.22
        color: "#50ffffff"
        border.color: "#70ffffff"
        border.width: 2
        visible: opacity > 0
        opacity: tile.dropTarget && !tile.isFolderTile ? 1 : 0
        Behavior on opacity { NumberAnimation { duration: 120 } }
    }

    Item {
        id: iconBox
        width: tile.shownIconSize
        height: tile.shownIconSize
        x: (tile.width - width) / 2
        y: (tile.height - tile.hitHeight) / 2
        scale: tile.dropTarget ? (tile.isFolderTile ? 1.15 : 0.8) : (mouse.pressed ? 0.92 : 1)
        Behavior on scale { NumberAnimation { duration: 80 } }

        Image {
            anchors.fill: parent
            opacity: tile.protectedReason !== "" ? 0.45 : 1
            visible: tile.folderIcons.length === 0
            source: tile.active ? tile.icon : ""
            sourceSize: Qt.size(tile.iconSize, tile.iconSize)
            asynchronous: true
            smooth: true
            mipmap: true
        }

        // A folder's preview exists only on folder tiles: most tiles are apps.
        Loader {
            anchors.fill: parent
            anchors.margins: tile.shownIconSize * 0.06
            active: tile.folderIcons.length > 0
            sourceComponent: Rectangle {
                radius: width * 0.22
                color: tile.dropTarget ? "#70ffffff" : "#40ffffff"
                border.color: tile.dropTarget ? "#c0ffffff" : "#30ffffff"
                border.width: tile.dropTarget ? 2 : 1

                Grid {
                    id: preview
                    anchors.centerIn: parent
                    columns: 3
                    spacing: parent.width * 0.05
                    readonly property real cell: (parent.width * 0.8 - 2 * spacing) / 3
                    Repeater {
                        model: tile.folderIcons.slice(0, 9)
                        delegate: Image {
                            required property string modelData
                            width: preview.cell
                            height: preview.cell
                            source: tile.active ? modelData : ""
                            sourceSize: Qt.size(preview.cell, preview.cell)
                            asynchronous: true
                            smooth: true
                        }
                    }
                }
            }
        }
    }

    // The tick box of the selection mode: filled when ticked; a bar across
    // it for apps that may not be moved, which say why under their name.
    Rectangle {
        visible: tile.selecting
        width: 26
        height: 26
        radius: 13
        x: iconBox.x - 4
        y: iconBox.y - 4
        color: tile.selected ? "#3d7bd9" : tile.protectedReason !== "" ? "#a0505050" : "#80000000"
        border.width: 2
        border.color: "white"
        Text {
            anchors.centerIn: parent
            text: tile.selected ? "\u2713" : tile.protectedReason !== "" ? "\u2013" : ""
            color: "white"
            font.pixelSize: 16
            font.bold: true
        }
    }

    Text {
        x: (tile.width - width) / 2
        y: iconBox.y + tile.shownIconSize + tile.labelSpacing
        width: tile.hitWidth
        height: tile.labelHeight
        text: tile.label
        color: tile.palette.windowText
        font.pixelSize: 14
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
        style: Text.Raised
        styleColor: tile.palette.shadow
    }
    Text {
        visible: tile.protectedReason !== ""
        x: (tile.width - width) / 2
        y: iconBox.y + tile.shownIconSize + tile.labelSpacing + tile.labelHeight
        width: tile.hitWidth
        text: tile.protectedReason
        color: tile.palette.windowText
        opacity: 0.75
        font.pixelSize: 11
        horizontalAlignment: Text.AlignHCenter
        elide: Text.ElideRight
        style: Text.Raised
        styleColor: tile.palette.shadow
    }

    MouseArea {
        id: mouse
        x: hover.x
        y: hover.y
        width: hover.width
        height: hover.height
        hoverEnabled: true
        acceptedButtons: Qt.LeftButton | Qt.RightButton
        onClicked: (click) => {
            if (click.button === Qt.RightButton)
                tile.menuRequested(mouse.x + click.x, mouse.y + click.y)
            else if (!tile.clicksFromDrag)
                tile.activated()
        }
    }
}
