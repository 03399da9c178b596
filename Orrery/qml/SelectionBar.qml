// The bar of the selection mode: how many apps are ticked, "Move to Trash …"
// (which reads "Moving to Trash …" while a move runs), "Make Folder" for two
// or more, "Move to Folder" with the folders by name above the bar, and
// "Done", which leaves the mode like Esc.
import QtQuick

Rectangle {
    id: bar

    required property QtObject overlay
    readonly property QtObject trash: bar.overlay.trash

    visible: bar.trash.selecting || bar.trash.isTrashing
    // The folders to choose from while the chooser is open.
    property var folders: []
    onVisibleChanged: folders = []
    width: row.implicitWidth + 16
    height: 44
    radius: 12
    color: "#e62b303a"
    border.color: "#40ffffff"

    // Clicks on the bar stay on the bar.
    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.AllButtons
    }

    Row {
        id: row
        anchors.centerIn: parent
        spacing: 8

        Text {
            anchors.verticalCenter: parent.verticalCenter
            leftPadding: 8
            rightPadding: 6
            text: bar.trash.selectedCount === 1 ? qsTr("1 app selected")
                                                 : qsTr("%1 apps selected").arg(bar.trash.selectedCount)
            color: "white"
            font.pixelSize: 15
        }

        Repeater {
            model: [
                { title: bar.trash.moveLabel, enabled: bar.trash.selectedCount > 0 && !bar.trash.isTrashing,
                  action: "trash", color: "#d93d3d" },
                { title: qsTr("Make Folder"), enabled: bar.trash.canMoveSelectionToFolder && !bar.trash.isTrashing,
                  action: "folder", color: "#40ffffff" },
                { title: qsTr("Move to Folder"),
                  enabled: bar.trash.selectedCount > 0 && !bar.trash.isTrashing && bar.trash.foldersByName().length > 0,
                  action: "into", color: "#40ffffff" },
                { title: qsTr("Done"), enabled: bar.trash.selecting, action: "done", color: "#3d7bd9" }
            ]
            delegate: Rectangle {
                required property var modelData
                width: Math.max(72, label.implicitWidth + 28)
                height: 32
                radius: 8
                color: modelData.color
                opacity: modelData.enabled ? 1 : 0.45
                Text {
                    id: label
                    anchors.centerIn: parent
                    text: modelData.title
                    color: "white"
                    font.pixelSize: 15
                }
                MouseArea {
                    anchors.fill: parent
                    enabled: modelData.enabled
                    onClicked: {
                        if (modelData.action === "trash")
                            bar.trash.requestTrash()
                        else if (modelData.action === "folder")
                            bar.overlay.makeFolderFromSelection()
                        else if (modelData.action === "into")
                            bar.folders = bar.folders.length > 0 ? [] : bar.trash.foldersByName()
                        else
                            bar.trash.exitSelection()
                    }
                }
            }
        }
    }

    // The folders by name, above the bar; a click moves the ticked apps in.
    Rectangle {
        visible: bar.folders.length > 0
        anchors.bottom: bar.top
        anchors.bottomMargin: 8
        anchors.right: bar.right
        width: 240
        height: Math.min(folderList.contentHeight, 6 * 32) + 12
        radius: 10
        color: "#2a2e36"
        border.color: "#40ffffff"

        ListView {
            id: folderList
            anchors.fill: parent
            anchors.margins: 6
            clip: true
            model: bar.folders
            delegate: Rectangle {
                required property var modelData
                width: folderList.width
                height: 32
                radius: 6
                color: choice.containsMouse ? "#3d7bd9" : "transparent"
                Text {
                    x: 10
                    width: parent.width - 20
                    anchors.verticalCenter: parent.verticalCenter
                    text: modelData.name
                    elide: Text.ElideRight
                    color: "white"
                    font.pixelSize: 15
                }
                MouseArea {
                    id: choice
                    anchors.fill: parent
                    hoverEnabled: true
                    onClicked: {
                        // Closing the list destroys this delegate: what the
                        // call needs is taken first.
                        const id = modelData.id
                        const trash = bar.trash
                        bar.folders = []
                        trash.moveSelectionToFolder(id)
                    }
                }
            }
        }
    }
}
