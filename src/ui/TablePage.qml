// Any screen that is a table: its title and controls where a thumb finds them,
// its sections as cards.
//
// The list's parts reach the ids around them, which this linter does not follow.
// qmllint disable unqualified
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
    readonly property var titleKeys: ({
        "ExportTypeViewController": "TYPE",
        "ExportTypeConfigurationViewController": "CONFIGURE",
        "ReminderViewController": "EVERY",
        "RestoreBackupViewController": "RESTORE",
        "DuplicateRecordsTableViewController": "CLEAR_DUPLICATES"
    })
    readonly property string title: screen.title.length > 0 ? screen.title
                                    : titleKeys[screen.name] ? Texts.text(titleKeys[screen.name]) : Texts.text("Varnok")
    readonly property var trash: controls.trash
    readonly property var warning: controls.lbl_Warning
    readonly property var activity: controls.activityIndicator
    readonly property var toTop: controls.scrollTop
    readonly property var support: controls.onClick_Support

    Accessible.role: Accessible.Pane
    Accessible.name: title

    Component.onDestruction: presenter.forget(screen)
    Keys.onEscapePressed: screen.close()
    Keys.onBackPressed: screen.close()
    Shortcut {
        sequences: ["Alt+Left", "Back"]
        enabled: page.activeFocus
        onActivated: page.screen.close()
    }

    // Whatever is open above this page goes first; a switch disturbs nothing.
    function inFront(): bool {
        return presenter.closeAbove(screen)
    }

    function activate(item: int, row: PageRow) {
        if (!row || !row.isRow || !row.pressable)
            return
        if (row.hasSwitch)
            screen.switchRow(item, row.switchState === 0)
        else if (row.isButton || row.segments.length > 0)
            press(item)
        else if (row.markable)
            screen.markRow(item, !row.marked)
        else if (screen.choice || row.selectable && inFront())
            screen.selectRow(item)
    }
    function press(item: int) {
        if (inFront())
            screen.pressRow(item)
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.window
    }
    HeaderBar {
        id: bar
        z: 1
        width: parent.width
        title: page.title
        backText: page.controls[page.screen.closing]?.text ?? ""
        onBack: if (page.inFront()) page.screen.close()
        actionText: page.controls.edit ? page.controls.edit.text : ""
        onAction: page.screen.tap("edit")
        Rectangle {
            parent: bar
            anchors.bottom: parent.bottom
            width: parent.width
            height: 1
            color: Theme.separator
            visible: list.contentY > list.originY + 4
        }
    }

    ListView {
        id: list
        objectName: "table"

        // Set by keys, cleared by touches: the ring is for those who need it.
        property bool byKeyboard: false

        function isRow(item: int): bool {
            return page.screen.table.isRow(item)
        }
        function move(step: int) {
            byKeyboard = true
            let item = currentIndex
            do {
                item += step
            } while (item >= 0 && item < count && !isRow(item))
            if (item >= 0 && item < count) {
                currentIndex = item
                positionViewAtIndex(item, ListView.Contain)
            } else {
                step < 0 ? positionViewAtBeginning() : positionViewAtEnd()
            }
        }
        function jump(section: int) {
            const item = page.screen.table.itemOfSection(section)
            if (item >= 0)
                positionViewAtIndex(item, ListView.Beginning)
        }

        anchors.top: bar.bottom
        anchors.bottom: actions.top
        anchors.left: parent.left
        anchors.right: letters.visible ? letters.left : parent.right
        clip: true
        focus: true
        activeFocusOnTab: true
        boundsBehavior: Flickable.DragOverBounds
        reuseItems: true
        cacheBuffer: 320
        model: page.screen.table
        currentIndex: -1
        highlightFollowsCurrentItem: false
        keyNavigationEnabled: false
        Accessible.role: Accessible.List
        Accessible.name: page.title

        onActiveFocusChanged: if (!activeFocus) byKeyboard = false
        onContentYChanged: page.screen.scrolled(contentY - originY)
        Keys.onUpPressed: move(-1)
        Keys.onDownPressed: move(1)
        Keys.onPressed: event => {
            const step = Math.max(1, Math.floor(height / 64) - 1)
            if (event.key === Qt.Key_Return || event.key === Qt.Key_Enter || event.key === Qt.Key_Space) {
                byKeyboard = true
                page.activate(currentIndex, currentItem as PageRow)
            } else if (event.key === Qt.Key_Delete && page.screen.deletable && currentIndex >= 0) {
                page.screen.deleteRow(currentIndex)
            } else if (event.key === Qt.Key_Home) {
                currentIndex = -1
                positionViewAtBeginning()
                move(1)
            } else if (event.key === Qt.Key_End) {
                currentIndex = count
                move(-1)
            } else if (event.key === Qt.Key_PageDown) {
                currentIndex = Math.min(count - 1, currentIndex + step)
                move(isRow(currentIndex) ? 0 : 1)
            } else if (event.key === Qt.Key_PageUp) {
                currentIndex = Math.max(0, currentIndex - step)
                move(isRow(currentIndex) ? 0 : -1)
            } else {
                // A letter goes to its section.
                const section = event.text.length > 0 ? page.screen.table.indexTitles.indexOf(event.text.toUpperCase()) : -1
                if (section < 0)
                    return
                jump(section)
                currentIndex = page.screen.table.itemOfSection(section)
                move(isRow(currentIndex) ? 0 : 1)
            }
            event.accepted = true
        }

        ScrollBar.vertical: ScrollBar {
            visible: !letters.visible && list.contentHeight > list.height
        }

        header: Column {
            width: ListView.view.width
            topPadding: Theme.gap
            bottomPadding: page.screen.header.length > 0 || page.warning ? Theme.margin : 0
            spacing: Theme.margin

            Text {
                visible: text.length > 0
                x: Math.max(Theme.margin, Math.round((parent.width - Theme.columnWidth) / 2)) + 4
                width: parent.width - 2 * x
                text: page.screen.header
                font.pixelSize: Theme.body
                color: Theme.secondary
                wrapMode: Text.Wrap
                lineHeight: 1.15
                horizontalAlignment: Text.AlignLeft
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
            Spinner {
                anchors.horizontalCenter: parent.horizontalCenter
                visible: page.activity ? !page.activity.hidden : false
                Accessible.role: Accessible.Indicator
                Accessible.name: page.title
            }
            Text {
                visible: page.warning ? !page.warning.hidden : false
                width: parent.width
                topPadding: 80
                text: page.warning ? page.warning.text : ""
                font.pixelSize: Theme.body
                color: Theme.secondary
                wrapMode: Text.Wrap
                horizontalAlignment: Text.AlignHCenter
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
        }
        footer: Item {
            width: ListView.view.width
            height: Theme.margin + (help.visible ? help.height + 24 : 0)
            ActionButton {
                id: help
                objectName: "onClick_Support"
                visible: page.support ? !page.support.hidden : false
                anchors.horizontalCenter: parent.horizontalCenter
                y: 20
                width: Math.min(implicitWidth, parent.width - 2 * Theme.margin)
                weight: ActionButton.Plain
                symbol: "help"
                text: page.support ? page.support.text : ""
                onClicked: page.screen.tap("onClick_Support")
            }
        }

        delegate: PageRow {
            id: row
            width: ListView.view.width
            screen: page.screen
            focused: list.byKeyboard && list.activeFocus && ListView.isCurrentItem
            onActivated: {
                list.byKeyboard = false
                list.currentIndex = index
                page.activate(index, row)
            }
            onSegmentPressed: page.press(index)
            onDeletionAsked: page.screen.deleteRow(index)
        }

        remove: Transition { NumberAnimation { property: "opacity"; to: 0; duration: Theme.quick } }
        removeDisplaced: Transition { NumberAnimation { property: "y"; duration: Theme.slide; easing.type: Easing.OutCubic } }

        Connections {
            target: page.screen.table
            property real kept: 0
            function onModelAboutToBeReset() { kept = list.contentY - list.originY }
            function onModelReset() {
                list.forceLayout()
                list.contentY = list.originY + Math.max(0, Math.min(kept, list.contentHeight - list.height))
            }
        }
    }

    FocusFollower { view: list }
    SectionIndex {
        id: letters
        visible: titles.length > 1 && list.contentHeight > list.height
        anchors.top: list.top
        anchors.bottom: list.bottom
        anchors.right: parent.right
        anchors.rightMargin: 4
        titles: page.screen.table.indexTitles
        onJump: section => list.jump(section)
    }

    IconButton {
        objectName: "scrollTop"
        visible: page.toTop ? !page.toTop.hidden : false
        anchors.right: list.right
        anchors.bottom: list.bottom
        anchors.margins: Theme.margin
        symbol: "up"
        text: page.toTop ? page.toTop.text : ""
        color: Theme.fillText
        background: Rectangle {
            radius: width / 2
            color: Theme.fill
        }
        onClicked: {
            list.positionViewAtBeginning()
            page.screen.tap("scrollTop")
        }
    }

    // What concerns the whole page, at the thumb.
    Rectangle {
        id: actions
        anchors.bottom: parent.bottom
        width: parent.width
        height: visible ? flow.implicitHeight + 24 : 0
        visible: page.screen.buttons.length > 0 || page.trash !== undefined
        color: Theme.window

        Rectangle {
            width: parent.width
            height: 1
            color: Theme.separator
        }
        GridLayout {
            id: flow
            anchors.centerIn: parent
            width: Math.min(parent.width - 2 * Theme.margin, Theme.columnWidth)
            columns: Theme.scale > 1.3 || width < 330 ? 1 : 3
            columnSpacing: Theme.gap
            rowSpacing: Theme.gap

            Repeater {
                model: page.trash ? page.trash.segments : []
                ActionButton {
                    required property int index
                    required property string modelData
                    objectName: "trash" + index
                    Layout.fillWidth: true
                    Layout.preferredWidth: 1
                    leftPadding: 12
                    rightPadding: 12
                    destructive: true
                    text: modelData
                    onClicked: page.screen.tap("trash", index)
                }
            }
            Repeater {
                model: page.screen.buttons
                ActionButton {
                    required property var modelData
                    objectName: modelData.name
                    Layout.fillWidth: true
                    weight: ActionButton.Filled
                    destructive: modelData.name === "clearDuplicates"
                    enabled: modelData.enabled
                    text: modelData.text
                    onClicked: page.screen.tap(modelData.name)
                }
            }
        }
    }
}
