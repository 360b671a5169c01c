// The first page: one big button, how the backup goes, and what to do with it.
// While there is nobody to back up it says what to do next instead.
pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Varnok

FocusScope {
    id: page

    required property ScreenAdapter screen
    required property Presenter presenter
    required property ContactImport contactImport
    required property AddressBookChoice books

    // By name; a page knows which its screen has.
    readonly property var controls: screen.controls
    readonly property var start: controls.btn_Backup.hidden ? controls.btn_Export : controls.btn_Backup
    readonly property bool running: !controls.btn_Cancel.hidden
    readonly property bool finished: !controls.btn_Send.hidden
    readonly property bool denied: controls.lbl_PrivacyMessage.text.length > 0
    readonly property bool empty: !denied && !running && !finished && !start.hidden && screen.progressMax === 0
    readonly property real done: screen.progressMax > 0 ? screen.progressValue / screen.progressMax : 0
    readonly property bool flat: height < 520 && width > height

    Accessible.role: Accessible.Pane
    Accessible.name: Texts.text("Varnok")

    Component.onDestruction: presenter.forget(screen)

    Connections {
        target: page.contactImport
        function onDialogWanted() {
            if (!dialog.item)
                dialog.setSource("ImportDialog.qml", {"contactImport": page.contactImport})
            const files = dialog.item as ImportDialog
            files.open()
        }
    }

    // The toolkit's own dialog, made when it is first asked for.
    Loader {
        id: dialog
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.window
    }
    HeaderBar {
        id: bar
        z: 1
        width: parent.width
        title: Texts.text("Varnok")
        leading: IconButton {
            objectName: "import"
            visible: !page.running
            symbol: "import"
            text: Texts.text("IMPORT_FILE")
            onClicked: page.contactImport.choose()
        }
        IconButton {
            objectName: "btn_Settings"
            visible: !page.controls.btn_Settings.hidden
            enabled: page.controls.btn_Settings.enabled
            symbol: "settings"
            text: page.controls.btn_Settings.text
            onClicked: page.screen.tap("btn_Settings")
        }
    }
    FocusFollower { view: scroller }
    Flickable {
        id: scroller
        anchors.top: bar.bottom
        anchors.bottom: parent.bottom
        width: parent.width
        contentHeight: Math.max(height, content.implicitHeight + 2 * Theme.margin)
        boundsBehavior: Flickable.StopAtBounds
        clip: contentHeight > height

        Item {
            id: content
            anchors.horizontalCenter: parent.horizontalCenter
            y: Math.max(Theme.margin, Math.round((scroller.height - implicitHeight) * (page.flat ? 0.4 : 0.42)))
            width: Math.min(parent.width - 2 * Theme.margin, page.flat ? 720 : 480)
            implicitHeight: page.empty || page.denied ? nobody.implicitHeight : ready.implicitHeight

            // Nobody to back up.
            ColumnLayout {
                id: nobody
                visible: page.empty || page.denied
                width: parent.width
                spacing: Theme.margin

                Rectangle {
                    visible: !page.flat
                    Layout.alignment: Qt.AlignHCenter
                    implicitWidth: 112
                    implicitHeight: 112
                    radius: 56
                    color: Theme.tonal
                    Icon {
                        anchors.centerIn: parent
                        width: 56
                        height: 56
                        name: page.denied ? "lock" : "people"
                        color: Theme.accent
                    }
                }
                Text {
                    Layout.fillWidth: true
                    Layout.topMargin: Theme.gap
                    text: page.denied ? Texts.text("NO_ACCESS_TITLE") : Texts.text("FIRST_RUN_TITLE")
                    font.pixelSize: Theme.title
                    font.weight: Font.Bold
                    color: Theme.text
                    wrapMode: Text.Wrap
                    horizontalAlignment: Text.AlignHCenter
                    Accessible.role: Accessible.Heading
                    Accessible.name: text
                }
                Text {
                    objectName: "lbl_PrivacyMessage"
                    Layout.fillWidth: true
                    text: page.denied ? page.controls.lbl_PrivacyMessage.text : Texts.text("FIRST_RUN_INFO")
                    font.pixelSize: Theme.body
                    color: Theme.secondary
                    wrapMode: Text.Wrap
                    horizontalAlignment: Text.AlignHCenter
                    lineHeight: 1.2
                    Accessible.role: Accessible.StaticText
                    Accessible.name: text
                }
                ActionButton {
                    objectName: "firstStep"
                    Layout.alignment: Qt.AlignHCenter
                    Layout.maximumWidth: content.width
                    Layout.topMargin: Theme.gap
                    weight: ActionButton.Filled
                    symbol: page.denied ? "" : "import"
                    text: page.denied ? Texts.text("TRY_AGAIN") : Texts.text("IMPORT_FILE")
                    onClicked: page.denied ? page.contactImport.lookAgain() : page.contactImport.choose()
                }
                ActionButton {
                    objectName: "chooseBook"
                    Layout.alignment: Qt.AlignHCenter
                    Layout.maximumWidth: content.width
                    symbol: "people"
                    text: Texts.text("CHOOSE_BOOK")
                    onClicked: page.books.ask()
                }
            }

            GridLayout {
                id: ready
                visible: !nobody.visible
                width: parent.width
                columns: page.flat ? 2 : 1
                columnSpacing: 40
                rowSpacing: 24

                AbstractButton {
                    id: big
                    objectName: "btn_Backup"
                    readonly property int side: page.flat ? Math.max(160, Math.min(220, scroller.height - 2 * Theme.margin)) : 232
                    Layout.alignment: Qt.AlignHCenter
                    implicitWidth: side
                    implicitHeight: side
                    text: page.start.text
                    visible: !page.start.hidden
                    enabled: page.start.enabled && !page.running
                    focus: true
                    focusPolicy: Qt.TabFocus
                    Accessible.role: Accessible.Button
                    Accessible.name: text
                    Accessible.onPressAction: big.clicked()
                    Keys.onReturnPressed: clicked()
                    Keys.onEnterPressed: clicked()
                    onClicked: page.screen.tap(page.start.name)

                    background: Item {
                        ProgressRing {
                            anchors.fill: parent
                            value: page.running || page.finished ? page.done : 0
                            color: Theme.accent
                            trackColor: Theme.tonal
                            thickness: 10
                        }
                        Rectangle {
                            anchors.fill: parent
                            anchors.margins: 20
                            radius: width / 2
                            color: page.running ? Theme.card : big.down ? Theme.fillPressed : Theme.fill
                        }
                        FocusRing {
                            visible: big.visualFocus
                            anchors.margins: -6
                            radius: width / 2
                        }
                    }
                    contentItem: Item {
                        Column {
                            visible: !page.running
                            anchors.centerIn: parent
                            width: big.side - 72
                            spacing: Theme.gap
                            Icon {
                                anchors.horizontalCenter: parent.horizontalCenter
                                width: 52
                                height: 52
                                name: "backup"
                                color: Theme.fillText
                            }
                            Text {
                                width: parent.width
                                text: big.text
                                // Long words get smaller before they would be cut.
                                font.pixelSize: Theme.title
                                fontSizeMode: Text.Fit
                                minimumPixelSize: 14
                                height: Math.min(implicitHeight, big.side / 3)
                                font.weight: Font.Bold
                                color: Theme.fillText
                                wrapMode: Text.WordWrap
                                horizontalAlignment: Text.AlignHCenter
                            }
                        }
                        Text {
                            visible: page.running
                            anchors.centerIn: parent
                            text: Texts.format("PERCENT", Math.floor(page.done * 100))
                            font.pixelSize: Math.min(Theme.display, 52)
                            font.weight: Font.Bold
                            color: Theme.accent
                            Accessible.role: Accessible.ProgressBar
                            Accessible.name: text
                        }
                    }
                }
                ColumnLayout {
                    Layout.fillWidth: true
                    spacing: Theme.margin

                    Text {
                        objectName: "lbl_Backup"
                        Layout.fillWidth: true
                        Layout.minimumHeight: Math.round(Theme.heading * 2.6)
                        text: page.controls.lbl_Backup.text
                        font.pixelSize: Theme.heading
                        font.weight: page.running ? Font.Normal : Font.DemiBold
                        color: page.running ? Theme.secondary : Theme.text
                        wrapMode: Text.Wrap
                        maximumLineCount: 3
                        elide: Text.ElideRight
                        horizontalAlignment: Text.AlignHCenter
                        verticalAlignment: page.flat ? Text.AlignVCenter : Text.AlignTop
                        textFormat: Text.PlainText
                        Accessible.role: Accessible.StaticText
                        Accessible.name: text
                    }
                    // Buttons come and go here; their place stays, so that nothing jumps.
                    Item {
                        Layout.fillWidth: true
                        implicitHeight: Math.max(Theme.target, sendButton.implicitHeight, cancelButton.implicitHeight)
                        ActionButton {
                            id: cancelButton
                            objectName: "btn_Cancel"
                            anchors.centerIn: parent
                            width: Math.min(implicitWidth, parent.width)
                            visible: page.running
                            text: page.controls.btn_Cancel.text
                            onClicked: page.screen.tap("btn_Cancel")
                        }
                        ActionButton {
                            id: sendButton
                            objectName: "btn_Send"
                            anchors.centerIn: parent
                            width: Math.min(implicitWidth, parent.width)
                            visible: page.finished
                            symbol: "send"
                            text: page.controls.btn_Send.text
                            onClicked: page.screen.tap("btn_Send")
                        }
                    }
                }
            }
        }
    }
}
