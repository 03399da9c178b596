// The sheets of the move to the Trash, hanging below the search field and
// modal over the overlay: the confirmation ("Move to Trash", destructive,
// and "Cancel"; Return moves, Esc cancels) and the report of what could not
// be moved ("OK").
import QtQuick

Item {
    id: sheet
    objectName: "trashSheet"

    required property QtObject trash
    required property real sheetTop

    readonly property bool confirming: sheet.trash.sheetShown
    visible: sheet.confirming || sheet.trash.failureShown

    Rectangle {
        anchors.fill: parent
        color: "#60000000"
        MouseArea {
            anchors.fill: parent
            acceptedButtons: Qt.AllButtons
        }
    }

    Rectangle {
        width: Math.min(480, sheet.width - 32)
        height: content.height + 48
        x: (sheet.width - width) / 2
        y: sheet.sheetTop
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
                text: sheet.confirming ? sheet.trash.sheetTitle : sheet.trash.failureTitle
                color: "white"
                font.pixelSize: 17
                font.weight: Font.DemiBold
                wrapMode: Text.Wrap
            }
            Text {
                width: parent.width
                text: sheet.confirming ? sheet.trash.sheetMessage : sheet.trash.failureMessage
                color: "#e0ffffff"
                font.pixelSize: 14
                lineHeight: 1.15
                wrapMode: Text.Wrap
            }
            // The first button stands rightmost; the destructive one is red.
            Row {
                anchors.right: parent.right
                layoutDirection: Qt.RightToLeft
                spacing: 10
                Repeater {
                    model: sheet.confirming ? [qsTr("Move to Trash"), qsTr("Cancel")] : [qsTr("OK")]
                    delegate: Rectangle {
                        required property string modelData
                        required property int index
                        width: Math.max(96, label.implicitWidth + 32)
                        height: 32
                        radius: 8
                        color: index !== 0 ? "#40ffffff" : sheet.confirming ? "#d93d3d" : "#3d7bd9"
                        Text {
                            id: label
                            anchors.centerIn: parent
                            text: modelData
                            color: "white"
                            font.pixelSize: 15
                        }
                        MouseArea {
                            anchors.fill: parent
                            onClicked: sheet.confirming ? sheet.trash.finishSheet(index === 0)
                                                        : sheet.trash.dismissFailure()
                        }
                    }
                }
            }
        }
    }
}
