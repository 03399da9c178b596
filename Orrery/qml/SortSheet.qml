// The confirmation before sorting by name: a sheet hanging below the search
// field, modal over the overlay. "Sort" is the default button (Return),
// "Cancel" and Esc leave the arrangement as it is.
import QtQuick

Item {
    id: sheet

    required property QtObject controller

    visible: sheet.controller.sortSheetShown

    Rectangle {
        anchors.fill: parent
        color: "#60000000"
        MouseArea {
            anchors.fill: parent
            acceptedButtons: Qt.AllButtons
        }
    }

    Rectangle {
        width: Math.min(460, sheet.width - 32)
        height: content.height + 48
        x: (sheet.width - width) / 2
        y: sheet.controller.sheetTop
        radius: 14
        color: "#f62b303a"
        border.color: "#40ffffff"

        Column {
            id: content
            x: 24
            y: 24
            width: parent.width - 48
            spacing: 14

            Text {
                width: parent.width
                text: sheet.controller.sortSheetMessage
                color: "white"
                font.pixelSize: 17
                font.weight: Font.DemiBold
                wrapMode: Text.Wrap
            }
            Text {
                width: parent.width
                text: sheet.controller.sortSheetText
                color: "#e0ffffff"
                font.pixelSize: 14
                wrapMode: Text.Wrap
            }
            // The first button, "Sort", stands rightmost as the default.
            Row {
                anchors.right: parent.right
                layoutDirection: Qt.RightToLeft
                spacing: 10
                Repeater {
                    model: [qsTr("Sort"), qsTr("Cancel")]
                    delegate: Rectangle {
                        required property string modelData
                        required property int index
                        width: Math.max(96, label.implicitWidth + 32)
                        height: 32
                        radius: 8
                        color: index === 0 ? "#3d7bd9" : "#40ffffff"
                        Text {
                            id: label
                            anchors.centerIn: parent
                            text: modelData
                            color: "white"
                            font.pixelSize: 15
                        }
                        MouseArea {
                            anchors.fill: parent
                            onClicked: sheet.controller.finishSortSheet(index === 0)
                        }
                    }
                }
            }
        }
    }
}
