// SPDX-License-Identifier: GPL-3.0-or-later
// The dialog that picks the files to open. Loaded when it is first asked for.
// Uses vxGlobalObject, vxSettings.
import QtQuick 2.15
import QtQuick.Dialogs 1.3

FileDialog {
    id: dialog

    readonly property string undefinedFolder: "toBeDefine"

    function patterns(formats) {
        return formats.map(format => "*." + format).join(" ");
    }

    function show() {
        const last = vxSettings.get("application/general/fileDialogLastFolder");
        // The system's dialog is made when it opens first, and takes no folder before.
        open();
        folder = last === undefinedFolder ? shortcuts.pictures : last;
    }

    title: qsTr("Open Media...")
    selectMultiple: true
    nameFilters: {
        const images = patterns(vxGlobalObject.getSupportedImageFormats());
        const videos = patterns(vxGlobalObject.getSupportedVideoFormats());
        return [qsTr("Media") + " (" + images + " " + videos + " *.vspl)", qsTr("All files") + " (*)"];
    }
    onAccepted: {
        vxSettings.set("application/general/fileDialogLastFolder", folder);
        const files = [];
        for (let i = 0; i < fileUrls.length; ++i)
            files.push(fileUrls[i].toString());
        vxGlobalObject.openFiles(files, false);
    }
}
