// One line of a page: a title or a footer, or a row on a card with whatever it
// carries.
//
// Loaded components reach the ids around them, which this linter does not follow,
// and which bound components may not do here.
// qmllint disable unqualified
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Varnok

Item {
    id: row

    required property int index
    required property int kind
    required property string text
    required property string detail
    required property string address
    required property string note
    required property bool first
    required property bool last
    required property bool apart
    required property bool blank
    required property bool disclosure
    required property bool selectable
    required property bool checked
    required property bool marked
    required property int switchState
    required property string button
    required property int tone
    required property bool pressable
    required property var segments
    required property real progress
    required property string badge

    property ScreenAdapter screen
    // The keyboard is on this row.
    property bool focused: false

    signal activated()
    signal segmentPressed()
    signal deletionAsked()

    readonly property bool isRow: kind === TableModel.Row
    readonly property bool isButton: button.length > 0
    readonly property bool hasSwitch: switchState >= 0
    readonly property bool markable: screen.multipleSelection
    readonly property bool reacts: pressable && (hasSwitch || isButton || markable || selectable || screen.choice)
    readonly property real side: Math.max(Theme.margin, Math.round((width - Theme.columnWidth) / 2))

    // Somebody without a name is somebody all the same.
    readonly property bool nameless: isRow && !isButton && text.length === 0 && selectable
    readonly property string title: isButton ? button : nameless ? Texts.text("NO_NAME") : text

    // Buttons of their own are heard of only in a list item.
    readonly property bool hasButtons: segments.length > 0 || address.length > 0 || screen.deletable

    // Here rather than on the control, which would say of itself that it is a list item.
    Accessible.ignored: blank
    Accessible.role: !isRow ? kind === TableModel.Header ? Accessible.Heading : Accessible.StaticText
                     : hasSwitch || markable ? Accessible.CheckBox
                     : screen.choice ? Accessible.RadioButton
                     : (isButton || selectable) && !hasButtons ? Accessible.Button : Accessible.ListItem
    Accessible.name: detail.length > 0 ? title + ", " + detail : title
    Accessible.description: badge
    Accessible.checkable: hasSwitch || markable || isRow && screen.choice
    Accessible.checked: switchState === 1 || marked || checked
    Accessible.focusable: isRow && pressable
    Accessible.focused: focused
    Accessible.onPressAction: activated()
    Accessible.onToggleAction: activated()

    implicitHeight: !isRow ? heading.implicitHeight : blank ? 0 : card.y + card.implicitHeight
    height: implicitHeight
    visible: height > 0

    // The view hands the item to another row.
    ListView.onPooled: card.swipe.close()

    Text {
        id: heading
        visible: !row.isRow
        x: row.side + 4
        width: row.width - 2 * x
        topPadding: row.kind === TableModel.Header ? (row.index === 0 ? 8 : 28) : 8
        bottomPadding: row.kind === TableModel.Header ? 8 : 4
        text: row.isRow ? "" : row.text
        font.pixelSize: row.kind === TableModel.Header ? Theme.body : Theme.caption
        font.weight: row.kind === TableModel.Header ? Font.Bold : Font.Normal
        color: row.kind === TableModel.Header ? Theme.text : Theme.secondary
        lineHeight: row.kind === TableModel.Header ? 1 : 1.15
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignLeft
        textFormat: Text.PlainText
        Accessible.ignored: true
    }

    SwipeDelegate {
        id: card

        visible: row.isRow && !row.blank
        x: row.side
        y: row.apart ? 24 : 0
        width: row.width - 2 * row.side
        height: implicitHeight
        implicitHeight: Math.max(row.detail.length > 0 && !row.screen.valuesBeside ? 64 : 56,
                                 contentItem.implicitHeight + topPadding + bottomPadding)
        topPadding: 10
        bottomPadding: 10
        leftPadding: Theme.margin
        rightPadding: Theme.margin
        focusPolicy: Qt.NoFocus
        hoverEnabled: true
        enabled: row.isRow
        swipe.enabled: row.isRow && row.screen.deletable
        swipe.right: swipe.enabled && !mirrored ? bin : null
        swipe.left: swipe.enabled && mirrored ? bin : null
        onClicked: row.activated()

        Accessible.ignored: true

        Component {
            id: bin
            Rectangle {
                x: card.mirrored ? 0 : card.width - width
                width: 88
                height: card.height
                radius: Theme.radius
                color: Theme.destructiveFill
                SwipeDelegate.onClicked: row.deletionAsked()
                Icon {
                    anchors.centerIn: parent
                    name: "trash"
                    color: Theme.fillText
                }
                Accessible.role: Accessible.Button
                Accessible.name: Texts.text("REMOVE")
                Accessible.onPressAction: row.deletionAsked()
            }
        }

        background: Rectangle {
            // Rounded where the card begins and ends; the middle ones overlap.
            color: card.down && row.reacts ? Theme.pressed : card.hovered && row.reacts ? Theme.hovered : Theme.card
            radius: row.first || row.last || card.swipe.position !== 0 ? Theme.radius : 0

            Rectangle {
                visible: row.last && !row.first && card.swipe.position === 0
                width: parent.width
                height: Theme.radius
                color: parent.color
            }
            Rectangle {
                visible: row.first && !row.last && card.swipe.position === 0
                anchors.bottom: parent.bottom
                width: parent.width
                height: Theme.radius
                color: parent.color
            }
            Rectangle {
                visible: !row.last
                anchors.bottom: parent.bottom
                x: row.isButton ? 0 : Theme.margin
                width: parent.width - (row.isButton ? 0 : Theme.margin)
                height: 1
                color: Theme.separator
            }
            FocusRing {
                z: 1
                visible: row.focused
                radius: Theme.radius
            }
        }

        contentItem: Loader {
            sourceComponent: content
        }
    }

    Component {
        id: content
        RowLayout {
            spacing: 12

            Rectangle {
                id: mark
                visible: row.markable
                Layout.alignment: Qt.AlignVCenter
                implicitWidth: 24
                implicitHeight: 24
                radius: 12
                color: row.marked ? Theme.fill : "transparent"
                border.width: row.marked ? 0 : 2
                border.color: Theme.track
                Icon {
                    visible: row.marked
                    anchors.centerIn: parent
                    width: 16
                    height: 16
                    name: "check"
                    color: Theme.fillText
                }
            }
            ColumnLayout {
                Layout.fillWidth: true
                Layout.alignment: Qt.AlignVCenter
                spacing: 2

                Loader {
                    active: row.address.length > 0
                    visible: active
                    Layout.fillWidth: true
                    Layout.topMargin: Theme.gap
                    Layout.bottomMargin: Theme.gap
                    sourceComponent: AddressCard {
                        address: row.address
                        note: row.note
                    }
                }
                Text {
                    id: title
                    visible: text.length > 0 && row.address.length === 0
                    Layout.fillWidth: true
                    text: row.title
                    font.pixelSize: Theme.body
                    font.weight: row.isButton ? Font.DemiBold : Font.Normal
                    color: row.nameless ? Theme.secondary : !row.isButton ? Theme.text : row.tone === 3 ? Theme.destructive : Theme.accent
                    opacity: row.pressable ? 1 : 0.5
                    wrapMode: Text.Wrap
                    maximumLineCount: 3
                    elide: Text.ElideRight
                    horizontalAlignment: row.isButton ? Text.AlignHCenter : Text.AlignLeft
                    textFormat: Text.PlainText
                }
                Text {
                    visible: text.length > 0
                    Layout.fillWidth: true
                    text: row.screen.valuesBeside ? "" : row.detail
                    font.pixelSize: Theme.caption
                    color: Theme.secondary
                    wrapMode: Text.Wrap
                    maximumLineCount: 4
                    elide: Text.ElideRight
                    horizontalAlignment: Text.AlignLeft
                    textFormat: Text.PlainText
                }
                Loader {
                    active: row.progress >= 0
                    visible: active
                    Layout.fillWidth: true
                    Layout.topMargin: 6
                    sourceComponent: ProgressLine { value: row.progress }
                }
                Loader {
                    active: row.segments.length > 0 && below
                    visible: active
                    readonly property bool below: title.implicitWidth + segmentRoom.width + 12 > card.availableWidth
                    Layout.topMargin: 4
                    Layout.fillWidth: true
                    sourceComponent: SegmentButtons {
                        titles: row.segments
                        room: card.availableWidth
                        onPressed: row.segmentPressed()
                    }
                }
            }
            Loader {
                active: row.segments.length > 0 && title.implicitWidth + segmentRoom.width + 12 <= card.availableWidth
                visible: active
                sourceComponent: SegmentButtons {
                    titles: row.segments
                    onPressed: row.segmentPressed()
                }
            }
            Text {
                visible: text.length > 0
                Layout.maximumWidth: card.availableWidth * 0.5
                text: row.screen.valuesBeside ? row.detail : ""
                font.pixelSize: Theme.body
                color: Theme.secondary
                wrapMode: Text.Wrap
                horizontalAlignment: Text.AlignRight
                textFormat: Text.PlainText
            }
            Loader {
                active: row.badge.length > 0
                visible: active
                sourceComponent: Rectangle {
                    implicitWidth: Math.max(implicitHeight, badgeText.implicitWidth + 14)
                    implicitHeight: badgeText.implicitHeight + 6
                    radius: height / 2
                    color: Theme.tonal
                    Text {
                        id: badgeText
                        anchors.centerIn: parent
                        text: row.badge
                        font.pixelSize: Theme.caption
                        font.weight: Font.Bold
                        color: Theme.accent
                    }
                }
            }
            Loader {
                active: row.hasSwitch
                visible: active
                opacity: row.pressable ? 1 : 0.45
                sourceComponent: OnOffSwitch { on: row.switchState === 1 }
            }
            Icon {
                visible: row.checked
                implicitWidth: Theme.icon
                implicitHeight: Theme.icon
                name: "check"
                color: Theme.accent
            }
            Loader {
                active: row.screen.deletable && (row.screen.editing || card.hovered)
                visible: active
                sourceComponent: IconButton {
                    objectName: "delete"
                    focusPolicy: Qt.NoFocus
                    symbol: "trash"
                    color: Theme.destructive
                    text: Texts.text("REMOVE")
                    onClicked: row.deletionAsked()
                }
            }
            Icon {
                visible: row.disclosure && !row.markable && !row.screen.editing
                implicitWidth: 20
                implicitHeight: 20
                name: "forward"
                color: Theme.secondary
                mirrored: card.mirrored
            }
        }
    }

    // How wide the segments are, to see where they fit.
    TextMetrics {
        id: segmentText
        font.pixelSize: Theme.body
        font.weight: Font.DemiBold
        text: row.segments.join("")
    }
    QtObject {
        id: segmentRoom
        readonly property real width: row.segments.length === 0 ? 0 : segmentText.width + 48 * row.segments.length
    }
}
