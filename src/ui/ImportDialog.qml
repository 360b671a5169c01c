// Chooses vCard files where the desktop has no dialog for that.
import QtQuick
import QtQuick.Dialogs
import Varnok

FileDialog {
    required property ContactImport contactImport

    title: Texts.text("IMPORT_FILE")
    fileMode: FileDialog.OpenFiles
    nameFilters: ["vCard (*.vcf *.VCF *.vcard)"]
    onAccepted: contactImport.importUrls(selectedFiles)
}
