// The strip of letters at the end of a long list: touched or slid over, the list
// goes to that letter.
pragma ComponentBehavior: Bound
import QtQuick
import Varnok

Item {
    id: strip

    property var titles: []
    readonly property int rowHeight: Math.round(Math.max(Theme.caption * 1.25, 16))
    // Where not all fit, every second or third one stands for those after it.
    readonly property int step: Math.max(1, Math.ceil(titles.length * rowHeight / Math.max(1, height - 8)))
    readonly property int shown: Math.ceil(titles.length / step)

    signal jump(int section)

    width: 28
    Accessible.role: Accessible.List
    Accessible.name: Texts.text("SECTION_INDEX")

    Column {
        id: column
        anchors.centerIn: parent
        Repeater {
            model: strip.shown
            Text {
                required property int index
                width: strip.width
                height: strip.rowHeight
                readonly property string title: strip.titles[index * strip.step] ?? ""
                readonly property bool nameless: title.trim().length === 0
                text: nameless ? "–" : title
                font.pixelSize: Theme.caption
                font.weight: Font.Bold
                color: Theme.accent
                horizontalAlignment: Text.AlignHCenter
                verticalAlignment: Text.AlignVCenter
                Accessible.role: Accessible.Button
                Accessible.name: nameless ? Texts.text("NO_NAME") : title
                Accessible.onPressAction: strip.jump(index * strip.step)
            }
        }
    }
    MouseArea {
        anchors.fill: parent
        anchors.leftMargin: -10
        preventStealing: true
        function go(y: real) {
            const at = Math.floor((y - column.y) / strip.rowHeight * strip.step)
            strip.jump(Math.max(0, Math.min(strip.titles.length - 1, at)))
        }
        onPressed: mouse => go(mouse.y)
        onPositionChanged: mouse => go(mouse.y)
    }
}
