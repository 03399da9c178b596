// What the overlay draws behind everything: the fill (glass tint, its
// opaque stand-in, or the solid colour) and, once it is rendered, the
// blurred desktop picture under its veil, faded in over the fill. Without
// a model (before the program hands one over) a plain dark fill.
import QtQuick

Item {
    id: background

    property QtObject model: null

    Rectangle {
        anchors.fill: parent
        color: background.model ? background.model.fill : "#1c2028"
    }

    Item {
        anchors.fill: parent
        // Shown at once when the picture is there as the overlay opens;
        // faded in when it arrives while the overlay is up.
        opacity: picture.status === Image.Ready && picture.source != "" ? 1 : 0
        Behavior on opacity { NumberAnimation { duration: 300; easing.type: Easing.OutCubic } }

        Image {
            id: picture
            anchors.fill: parent
            source: background.model ? background.model.picture : ""
            // Rendered at a quarter of the screen's size: a blur that wide
            // loses nothing to bilinear stretching.
            fillMode: Image.Stretch
            smooth: true
            cache: false
            asynchronous: false
        }

        Rectangle {
            anchors.fill: parent
            color: "black"
            opacity: background.model ? background.model.veil : 0
        }
    }
}
