// A context menu: the entries the model computed for the item it was
// opened on, at the pointer or at the focused tile. A click beside it
// closes it; the keys are handled by the controller.
import QtQuick

Item {
    id: menu

    required property QtObject overlay
    // Where the menu opens, in this item's coordinates.
    property point anchor: Qt.point(0, 0)

    visible: menu.overlay.menuOpen

    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.LeftButton | Qt.RightButton
        onClicked: menu.overlay.closeMenu()
    }

    Rectangle {
        id: box
        width: 240
        height: entries.height + 12
        x: Math.max(8, Math.min(menu.anchor.x, menu.width - width - 8))
        y: Math.max(8, Math.min(menu.anchor.y, menu.height - height - 8))
        radius: 10
        color: "#f22a2e36"
        border.color: "#40ffffff"

        Column {
            id: entries
            y: 6
            width: parent.width

            Repeater {
                model: menu.overlay.menuEntries
                delegate: Rectangle {
                    required property var modelData
                    required property int index
                    width: entries.width
                    height: 32
                    color: index === menu.overlay.menuIndex && modelData.enabled ? "#3d7bd9"
                           : (pointer.containsMouse && modelData.enabled ? "#30ffffff" : "transparent")
                    Text {
                        x: 16
                        anchors.verticalCenter: parent.verticalCenter
                        text: modelData.title
                        color: modelData.enabled ? "white" : "#70ffffff"
                        font.pixelSize: 15
                    }
                    MouseArea {
                        id: pointer
                        anchors.fill: parent
                        hoverEnabled: true
                        enabled: modelData.enabled
                        onClicked: menu.overlay.chooseMenuEntry(index)
                    }
                }
            }
        }
    }
}
