// The shortcut field of the trigger settings: shows the stored shortcut,
// records a new one after a click (the next key press with Command, Option
// or Control; Esc cancels), and shows why a shortcut could not be set.
// Everything it decides is the recorder's (a ShortcutRecorder).
import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

ColumnLayout {
    id: root

    required property QtObject recorder

    spacing: 4

    RowLayout {
        spacing: 8

        Button {
            id: field
            objectName: "shortcutField"
            Layout.minimumWidth: 160
            text: root.recorder.recording ? qsTr("Type the shortcut…")
                                          : (root.recorder.shortcutText !== "" ? root.recorder.shortcutText
                                                                              : qsTr("Record Shortcut"))
            highlighted: root.recorder.recording
            onClicked: {
                field.forceActiveFocus()
                root.recorder.startRecording()
            }
            Keys.onPressed: (event) => {
                event.accepted = root.recorder.keyPressed(event.key, event.nativeScanCode, event.modifiers)
            }
            // Clicking elsewhere ends the recording like Esc.
            onActiveFocusChanged: if (!activeFocus) root.recorder.cancelRecording()
        }

        Button {
            objectName: "clearShortcut"
            text: qsTr("Clear")
            visible: root.recorder.shortcutText !== "" && !root.recorder.recording
            onClicked: root.recorder.clearShortcut()
        }
    }

    Label {
        objectName: "shortcutError"
        Layout.fillWidth: true
        visible: text !== ""
        text: root.recorder.error
        color: "#d9534f"
        wrapMode: Text.WordWrap
    }
}
