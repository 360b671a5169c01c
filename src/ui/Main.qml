// The window: one column of pages on a phone; from a certain width on the
// settings at the start and their pages beside them.
import QtQuick
import QtQuick.Controls.Basic
import Varnok

ApplicationWindow {
    id: window

    required property Presenter presenter
    required property ContactImport contactImport
    required property AddressBookChoice books
    required property MailQuestion mail

    readonly property bool mirrored: Application.layoutDirection === Qt.RightToLeft
    readonly property bool wide: width >= Theme.wideFrom
    readonly property bool settingsOpen: presenter.pages.length > 1
    readonly property bool twoPanes: wide && settingsOpen

    width: 420
    height: 800
    minimumWidth: 320
    minimumHeight: 320
    visible: true
    title: Texts.text("Varnok")
    color: Theme.window
    font.pixelSize: Theme.body

    function pagesFrom(first: int, end: int): var {
        const some = []
        for (let i = first; i < end; ++i)
            some.push(presenter.pages[i])
        return some
    }

    function sync() {
        const count = presenter.pages.length
        // Shared pages first: what covers them then slides over them.
        primary.pages = pagesFrom(0, Math.min(count, 2))
        secondary.pages = pagesFrom(2, count)
        if (count > 2)
            secondary.forceActiveFocus()
        else
            primary.forceActiveFocus()
    }

    Component.onCompleted: sync()

    Connections {
        target: window.presenter
        function onPagesChanged() { window.sync() }
    }

    Item {
        id: area
        anchors.fill: parent
        LayoutMirroring.enabled: window.mirrored
        LayoutMirroring.childrenInherit: true

        PageStack {
            id: primary
            objectName: "primary"
            presenter: window.presenter
            contactImport: window.contactImport
            books: window.books
            still: window.wide
            anchors.top: parent.top
            anchors.bottom: parent.bottom
            anchors.left: parent.left
            width: window.twoPanes ? Math.min(400, Math.round(window.width * 0.42)) : window.width
            // Under a page that covers it nothing is to be reached.
            visible: window.twoPanes || secondary.pages.length === 0 || secondary.busy
            clip: window.twoPanes
        }
        Rectangle {
            id: divider
            visible: window.twoPanes
            anchors.top: parent.top
            anchors.bottom: parent.bottom
            anchors.left: primary.right
            width: 1
            color: Theme.separator
        }
        Item {
            anchors.top: parent.top
            anchors.bottom: parent.bottom
            anchors.right: parent.right
            width: window.twoPanes ? window.width - primary.width - divider.width : window.width

            Column {
                visible: window.twoPanes && secondary.pages.length === 0 && !secondary.busy
                anchors.centerIn: parent
                width: Math.min(parent.width - 2 * Theme.margin, 320)
                spacing: Theme.margin
                Icon {
                    anchors.horizontalCenter: parent.horizontalCenter
                    width: 56
                    height: 56
                    name: "settings"
                    color: Theme.track
                }
                Text {
                    width: parent.width
                    text: Texts.text("CHOOSE_SETTING")
                    font.pixelSize: Theme.body
                    color: Theme.secondary
                    wrapMode: Text.Wrap
                    horizontalAlignment: Text.AlignHCenter
                    Accessible.role: Accessible.StaticText
                    Accessible.name: text
                }
            }
            PageStack {
                id: secondary
                objectName: "secondary"
                presenter: window.presenter
                contactImport: window.contactImport
                books: window.books
                still: window.wide
                anchors.fill: parent
                visible: pages.length > 0 || busy
                clip: window.twoPanes
            }
        }
        DropArea {
            anchors.fill: parent
            keys: ["text/uri-list"]
            onDropped: drop => {
                if (drop.hasUrls && window.presenter.pages.length === 1)
                    window.contactImport.importUrls(drop.urls)
            }
        }
    }

    BusyCard {
        presenter: window.presenter
        rightToLeft: window.mirrored
    }
    MailCard {
        question: window.mail
        rightToLeft: window.mirrored
    }
    QuestionCard {
        question: window.presenter.question
        rightToLeft: window.mirrored
    }
}
