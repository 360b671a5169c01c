// The bar at the top of a page: the way back, the title, and what else there is.
import QtQuick
import QtQuick.Layouts
import Varnok

Item {
    id: bar

    property string title
    property string backText
    property string actionText
    default property alias extra: extras.data
    property alias leading: leads.data

    signal back()
    signal action()

    // Large letters leave it no room beside a button.
    readonly property bool titleBelow: actionText.length > 0 && width > 0 &&
                                       natural.width > width - startRow.implicitWidth - endRow.implicitWidth - 24

    implicitHeight: titleBelow ? Theme.barHeight + natural.height + 8 : Math.max(Theme.barHeight, label.implicitHeight + 16)

    TextMetrics {
        id: natural
        font: label.font
        text: bar.title
    }
    GridLayout {
        anchors.fill: parent
        anchors.leftMargin: 4
        anchors.rightMargin: 4
        columns: 3
        columnSpacing: 4
        rowSpacing: 0

        Item {
            Layout.row: 0
            Layout.column: 0
            Layout.preferredWidth: Math.max(Theme.target, startRow.implicitWidth)
            Layout.fillHeight: true
            Row {
                id: startRow
                anchors.verticalCenter: parent.verticalCenter
                IconButton {
                    visible: bar.backText.length > 0
                    objectName: "back"
                    symbol: "back"
                    directed: true
                    text: bar.backText
                    onClicked: bar.back()
                }
                Row { id: leads }
            }
        }
        Text {
            id: label
            Layout.fillWidth: true
            Layout.row: bar.titleBelow ? 1 : 0
            Layout.column: bar.titleBelow ? 0 : 1
            Layout.columnSpan: bar.titleBelow ? 3 : 1
            text: bar.title
            font.pixelSize: Theme.heading
            font.weight: Font.Bold
            color: Theme.text
            elide: Text.ElideRight
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            maximumLineCount: 2
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }
        Item {
            Layout.row: 0
            Layout.column: 2
            Layout.alignment: Qt.AlignRight
            Layout.preferredWidth: Math.max(Theme.target, endRow.implicitWidth)
            Layout.fillHeight: true
            Row {
                id: endRow
                anchors.verticalCenter: parent.verticalCenter
                anchors.right: parent.right
                ActionButton {
                    objectName: "headerAction"
                    visible: bar.actionText.length > 0
                    weight: ActionButton.Plain
                    leftPadding: 12
                    rightPadding: 12
                    text: bar.actionText
                    onClicked: bar.action()
                }
                Row { id: extras }
            }
        }
    }
}
