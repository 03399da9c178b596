// The search field. Typing anywhere in the overlay lands here (the
// controller forwards printable keys and bumps focusRequest).
import QtQuick

Rectangle {
    id: field

    required property QtObject overlay

    readonly property color ink: palette.windowText

    height: 36
    radius: 10
    color: Qt.rgba(ink.r, ink.g, ink.b, 0.19)
    border.color: Qt.rgba(ink.r, ink.g, ink.b, input.activeFocus ? 0.5 : 0.25)

    Text {
        anchors.fill: parent
        anchors.leftMargin: 14
        verticalAlignment: Text.AlignVCenter
        visible: input.text === "" && !input.inputMethodComposing
        text: qsTr("Search")
        color: field.ink
        opacity: 0.63
        font.pixelSize: 16
    }

    TextInput {
        id: input
        objectName: "searchInput"
        anchors.fill: parent
        anchors.leftMargin: 14
        anchors.rightMargin: 14
        verticalAlignment: TextInput.AlignVCenter
        color: field.ink
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
