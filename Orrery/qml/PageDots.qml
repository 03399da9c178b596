// One dot per page; the current one is bright, a click goes to that page.
import QtQuick

Row {
    id: dots

    property int count: 1
    property int current: 0
    // An item is being dragged: the current dot grows, so a page flipped to
    // by holding the item at an edge shows at once.
    property bool dragging: false
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
                readonly property bool big: dots.dragging && index === dots.current
                width: big ? 12 : 8
                height: width
                radius: width / 2
                Behavior on width { NumberAnimation { duration: 150 } }
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
