// One dot per page; the current one is bright, a click goes to that page.
import QtQuick

Row {
    id: dots

    property int count: 1
    property int current: 0
    signal chosen(int page)

    spacing: 4

    Repeater {
        model: dots.count
        delegate: Item {
            required property int index
            width: 20
            height: 20
            Rectangle {
                anchors.centerIn: parent
                width: 8
                height: 8
                radius: 4
                color: dots.palette.windowText
                opacity: index === dots.current ? 0.95 : 0.35
            }
            MouseArea {
                anchors.fill: parent
                onClicked: dots.chosen(index)
            }
        }
    }
}
