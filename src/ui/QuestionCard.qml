// An alert or an action sheet: a card in the middle; on a phone sheets come up
// from below, within the thumb's reach.
pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls.Basic
import Varnok

FrontCard {
    id: popup

    required property QuestionAdapter question
    readonly property bool fromBelow: question.sheet && parent && parent.width < 600

    function show() {
        open()
        const first = buttons.itemAt(question.buttons.length === 1 ? 0 : question.cancelIndex)
        if (first)
            first.forceActiveFocus(Qt.PopupFocusReason)
    }

    Connections {
        target: popup.question
        function onChanged() {
            if (!popup.question.shown)
                popup.close()
            else if (!popup.visible)
                popup.show()
        }
    }
    Component.onCompleted: if (question.shown) show()
    // Closed by a key or a touch beside it: nothing is to be done.
    onAboutToHide: if (question.shown) question.answer(question.cancelIndex)
    onClosed: if (question.shown) show()

    x: Math.round((parent.width - width) / 2)
    y: fromBelow ? parent.height - height : Math.round((parent.height - height) / 2)
    width: fromBelow ? parent.width : Math.min(Theme.sheetWidth, parent.width - 2 * Theme.margin)
    height: Math.min(implicitHeight, parent.height - (fromBelow ? 24 : 2 * Theme.margin))
    closePolicy: question.sheet ? Popup.CloseOnEscape | Popup.CloseOnPressOutside : Popup.CloseOnEscape

    // A sheet has no corners below.
    Rectangle {
        parent: popup.background
        visible: popup.fromBelow
        anchors.bottom: parent.bottom
        width: parent.width
        height: 20
        color: Theme.raised
    }
    Flickable {
        id: scroller
        anchors.fill: parent
        LayoutMirroring.enabled: popup.rightToLeft
        LayoutMirroring.childrenInherit: true
        implicitHeight: column.implicitHeight
        contentHeight: column.implicitHeight
        clip: contentHeight > height
        boundsBehavior: Flickable.StopAtBounds

        FocusFollower { view: scroller }

        Column {
            id: column
            width: parent.width
            spacing: 12
            Accessible.role: Accessible.Dialog
            Accessible.name: popup.question.title

            Text {
                visible: text.length > 0
                width: parent.width
                text: popup.question.title
                font.pixelSize: popup.question.sheet ? Theme.body : Theme.heading
                font.weight: Font.Bold
                color: Theme.text
                wrapMode: Text.Wrap
                horizontalAlignment: Text.AlignHCenter
                Accessible.role: Accessible.Heading
                Accessible.name: text
            }
            Text {
                visible: text.length > 0
                width: parent.width
                text: popup.question.message
                font.pixelSize: Theme.body
                color: popup.question.title.length > 0 ? Theme.secondary : Theme.text
                wrapMode: Text.Wrap
                horizontalAlignment: Text.AlignHCenter
                lineHeight: 1.15
                Accessible.role: Accessible.AlertMessage
                Accessible.name: text
            }
            Item { width: 1; height: 4 }
            Grid {
                id: grid
                // Two short ones stand beside one another.
                readonly property bool beside: !popup.question.sheet && buttons.count === 2 && widest() * 2 + spacing <= width
                function widest(): real {
                    let most = 0
                    for (let i = 0; i < buttons.count; ++i) {
                        const item = buttons.itemAt(i)
                        if (item)
                            most = Math.max(most, item.implicitWidth)
                    }
                    return most
                }
                width: parent.width
                spacing: Theme.gap
                columns: beside ? 2 : 1

                Repeater {
                    id: buttons
                    model: popup.question.buttons
                    ActionButton {
                        required property int index
                        required property string modelData
                        objectName: "answer" + index
                        width: grid.beside ? (grid.width - grid.spacing) / 2 : grid.width
                        text: modelData
                        destructive: index === popup.question.destructiveIndex
                        weight: index === popup.question.cancelIndex && buttons.count > 1 ? ActionButton.Plain
                                : !popup.question.sheet ? ActionButton.Filled : ActionButton.Tonal
                        onClicked: popup.question.answer(index)
                    }
                }
            }
        }
    }
}
