// Who is to get a message, where there is no mail program that would ask it.
import QtQuick
import QtQuick.Controls.Basic
import Varnok

FrontCard {
    id: card

    required property MailQuestion question
    readonly property bool wanted: question.shown

    // What was typed before does not fit the next message.
    function show() {
        address.clear()
        address.wrong = false
        open()
        address.forceActiveFocus(Qt.PopupFocusReason)
    }
    function send() {
        address.wrong = !question.send(address.text)
    }

    onWantedChanged: wanted ? show() : close()
    Component.onCompleted: if (wanted) show()
    // Closed by a key: nothing is sent.
    onAboutToHide: question.cancel()

    x: Math.round((parent.width - width) / 2)
    y: Math.max(Theme.gap, Math.round((parent.height - height) / 3))
    width: Math.min(Theme.sheetWidth, parent.width - 2 * Theme.margin)
    height: Math.min(implicitHeight, parent.height - 2 * Theme.gap)
    closePolicy: Popup.CloseOnEscape

    Flickable {
        id: scroller
        anchors.fill: parent
        LayoutMirroring.enabled: card.rightToLeft
        LayoutMirroring.childrenInherit: true
        implicitHeight: column.implicitHeight
        contentHeight: column.implicitHeight
        clip: contentHeight > height
        boundsBehavior: Flickable.StopAtBounds

        FocusFollower { view: scroller }

        Column {
            id: column
            width: parent.width
            spacing: Theme.gap
            Accessible.role: Accessible.Dialog
            Accessible.name: card.question.subject

            Text {
                width: parent.width
                text: card.question.subject
                font.pixelSize: Theme.heading
                font.weight: Font.Bold
                color: Theme.text
                wrapMode: Text.Wrap
                horizontalAlignment: Text.AlignLeft
                textFormat: Text.PlainText
                Accessible.role: Accessible.Heading
                Accessible.name: text
            }
            Text {
                width: parent.width
                text: card.question.attachments
                font.pixelSize: Theme.body
                color: Theme.secondary
                wrapMode: Text.WrapAnywhere
                horizontalAlignment: Text.AlignLeft
                textFormat: Text.PlainText
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
            Text {
                topPadding: Theme.gap
                text: Texts.text("MAIL_TO")
                font.pixelSize: Theme.caption
                font.weight: Font.DemiBold
                color: Theme.text
                Accessible.ignored: true
            }
            TextField {
                id: address
                objectName: "mailTo"
                property bool wrong: false
                width: parent.width
                implicitHeight: Math.max(Theme.target, contentHeight + topPadding + bottomPadding)
                font.pixelSize: Theme.body
                color: Theme.text
                selectionColor: Theme.fill
                selectedTextColor: Theme.fillText
                inputMethodHints: Qt.ImhEmailCharactersOnly | Qt.ImhNoAutoUppercase | Qt.ImhNoPredictiveText
                // Addresses are written from left to right everywhere.
                LayoutMirroring.enabled: false
                horizontalAlignment: TextInput.AlignLeft
                onTextEdited: wrong = false
                onAccepted: card.send()
                Accessible.name: Texts.text("MAIL_TO")
                Accessible.description: hint.text
                background: Rectangle {
                    radius: Theme.radius
                    color: Theme.window
                    border.width: address.activeFocus || address.wrong ? 2 : 1
                    border.color: address.wrong ? Theme.destructive : address.activeFocus ? Theme.focus : Theme.track
                }
            }
            Text {
                id: hint
                width: parent.width
                text: Texts.text("MAIL_TO_HINT")
                font.pixelSize: Theme.caption
                color: address.wrong ? Theme.destructive : Theme.secondary
                wrapMode: Text.Wrap
                horizontalAlignment: Text.AlignLeft
                Accessible.role: address.wrong ? Accessible.AlertMessage : Accessible.StaticText
                Accessible.name: text
            }
            Grid {
                id: answers
                readonly property bool beside: Math.max(cancel.implicitWidth, send.implicitWidth) * 2 + spacing <= width
                topPadding: Theme.gap
                width: parent.width
                spacing: Theme.gap
                columns: beside ? 2 : 1
                ActionButton {
                    id: cancel
                    objectName: "mailCancel"
                    width: answers.beside ? (answers.width - answers.spacing) / 2 : answers.width
                    weight: ActionButton.Plain
                    text: Texts.text("Cancel")
                    onClicked: card.question.cancel()
                }
                ActionButton {
                    id: send
                    objectName: "mailSend"
                    width: cancel.width
                    weight: ActionButton.Filled
                    text: Texts.text("SEND")
                    onClicked: card.send()
                }
            }
        }
    }
}
