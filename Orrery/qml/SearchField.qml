// The search field. Typing anywhere in the overlay lands here (the
// controller forwards printable keys and bumps focusRequest).
import QtQuick

Rectangle {
    id: field

    required property QtObject overlay

    height: 36
    radius: 10
    color: "#30ffffff"
    border.color: input.activeFocus ? "#80ffffff" : "#40ffffff"

    Text {
        anchors.fill: parent
        anchors.leftMargin: 14
        verticalAlignment: Text.AlignVCenter
        visible: input.text === "" && !input.inputMethodComposing
        text: qsTr("Search")
        color: "#a0ffffff"
        font.pixelSize: 16
    }

    TextInput {
        id: input
        objectName: "searchInput"
        anchors.fill: parent
        anchors.leftMargin: 14
        anchors.rightMargin: 14
        verticalAlignment: TextInput.AlignVCenter
        color: "white"
        selectionColor: "#6080b0ff"
        font.pixelSize: 16
        clip: true
        focus: true
        text: field.overlay.query
        onTextEdited: field.overlay.query = text
    }

    Connections {
        target: field.overlay
        function onFocusRequestChanged() {
            input.forceActiveFocus()
            input.cursorPosition = input.text.length
        }
    }
}
