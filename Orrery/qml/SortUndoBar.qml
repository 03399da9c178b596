// The offer to undo the sort, shown while nothing else changed the
// arrangement since (the model decides); Ctrl+Z does the same.
import QtQuick

Rectangle {
    id: bar

    required property QtObject overlay

    visible: bar.overlay.canUndoSort
    width: row.width + 32
    height: 40
    radius: 20
    color: "#e8303640"
    border.color: "#40ffffff"

    Row {
        id: row
        anchors.centerIn: parent
        spacing: 14
        Text {
            anchors.verticalCenter: parent.verticalCenter
            text: qsTr("Sorted by name.")
            color: "white"
            font.pixelSize: 14
        }
        Rectangle {
            objectName: "undoSortButton"
            width: undo.implicitWidth + 24
            height: 28
            radius: 14
            color: undoPointer.containsMouse ? "#5a8de0" : "#3d7bd9"
            Text {
                id: undo
                anchors.centerIn: parent
                text: qsTr("Undo")
                color: "white"
                font.pixelSize: 14
            }
            MouseArea {
                id: undoPointer
                anchors.fill: parent
                hoverEnabled: true
                onClicked: bar.overlay.undoSort()
            }
        }
    }
}
