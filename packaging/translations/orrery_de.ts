<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>CommandLine</name>
    <message>
        <source>A full-screen application launcher.</source>
        <translation>Ein bildschirmfüllender Programmstarter.</translation>
    </message>
    <message>
        <source>Show the overlay, or hide it when it is shown. Starts Orrery if it is not running.</source>
        <translation>Die Übersicht zeigen oder, wenn sie gezeigt wird, ausblenden. Startet Orrery, wenn es nicht läuft.</translation>
    </message>
    <message>
        <source>Show the overlay.</source>
        <translation>Die Übersicht zeigen.</translation>
    </message>
    <message>
        <source>Show the overlay with the folder NAME open.</source>
        <translation>Die Übersicht mit dem Ordner NAME geöffnet zeigen.</translation>
    </message>
    <message>
        <source>NAME</source>
        <translation>NAME</translation>
    </message>
    <message>
        <source>Open the settings window.</source>
        <translation>Das Einstellungsfenster öffnen.</translation>
    </message>
    <message>
        <source>Print the apps Orrery shows, in their order (ID, name, file), and exit.</source>
        <translation>Die Programme, die Orrery zeigt, in ihrer Reihenfolge ausgeben (ID, Name, Datei) und beenden.</translation>
    </message>
    <message>
        <source>With --list-apps: also print the entries that are not shown, with the reason.</source>
        <translation>Mit --list-apps: auch die Einträge ausgeben, die nicht gezeigt werden, mit dem Grund.</translation>
    </message>
    <message>
        <source>Show the overlay, page through it and search, log how long each frame took, and quit.</source>
        <translation>Die Übersicht zeigen, durchblättern und durchsuchen, die Dauer jedes Bildes protokollieren und beenden.</translation>
    </message>
</context>
<context>
    <name>orrery::app::SettingsWindow</name>
    <message>
        <source>None</source>
        <translation>Keine</translation>
    </message>
    <message>
        <source>Top left</source>
        <translation>Oben links</translation>
    </message>
    <message>
        <source>Top right</source>
        <translation>Oben rechts</translation>
    </message>
    <message>
        <source>Bottom left</source>
        <translation>Unten links</translation>
    </message>
    <message>
        <source>Bottom right</source>
        <translation>Unten rechts</translation>
    </message>
    <message>
        <source>None</source>
        <comment>no modifier key</comment>
        <translation>Keine</translation>
    </message>
    <message>
        <source>Super</source>
        <translation>Super</translation>
    </message>
    <message>
        <source>Alt</source>
        <translation>Alt</translation>
    </message>
    <message>
        <source>Ctrl</source>
        <translation>Strg</translation>
    </message>
    <message>
        <source>Shift</source>
        <translation>Umschalt</translation>
    </message>
    <message>
        <source>Blurred wallpaper</source>
        <translation>Unscharfes Hintergrundbild</translation>
    </message>
    <message>
        <source>Glass</source>
        <translation>Glas</translation>
    </message>
    <message>
        <source>Solid colour</source>
        <translation>Einfarbig</translation>
    </message>
    <message>
        <source>Pages</source>
        <translation>Seiten</translation>
    </message>
    <message>
        <source>One scrolling list</source>
        <translation>Eine durchlaufende Liste</translation>
    </message>
    <message>
        <source>None</source>
        <comment>no keyboard shortcut</comment>
        <translation>Kein</translation>
    </message>
    <message>
        <source>key %1</source>
        <comment>a key without a name, by its code</comment>
        <translation>Taste %1</translation>
    </message>
    <message>
        <source>Orrery Settings</source>
        <translation>Orrery-Einstellungen</translation>
    </message>
    <message>
        <source>Settings pages</source>
        <translation>Einstellungsseiten</translation>
    </message>
    <message>
        <source>General</source>
        <translation>Allgemein</translation>
    </message>
    <message>
        <source>Trigger</source>
        <translation>Auslöser</translation>
    </message>
    <message>
        <source>Appearance</source>
        <translation>Darstellung</translation>
    </message>
    <message>
        <source>Hidden Apps</source>
        <translation>Ausgeblendete Programme</translation>
    </message>
    <message>
        <source>Sync</source>
        <translation>Abgleich</translation>
    </message>
    <message>
        <source>About</source>
        <translation>Über</translation>
    </message>
    <message>
        <source>Start Orrery when you log in</source>
        <translation>Orrery bei der Anmeldung starten</translation>
    </message>
    <message>
        <source>Starting at login is not available on this system.</source>
        <translation>Der Start bei der Anmeldung ist auf diesem System nicht möglich.</translation>
    </message>
    <message>
        <source>Show Orrery&apos;s icon in the panel&apos;s tray</source>
        <translation>Orrery-Symbol im Systemabschnitt der Leiste zeigen</translation>
    </message>
    <message>
        <source>This desktop has no tray for Orrery&apos;s icon.</source>
        <translation>Diese Arbeitsumgebung hat keinen Systemabschnitt für das Orrery-Symbol.</translation>
    </message>
    <message>
        <source>Settings open when you start Orrery again (for example from the application menu).</source>
        <translation>Die Einstellungen öffnen sich, wenn Sie Orrery erneut starten (zum Beispiel aus dem Anwendungsmenü).</translation>
    </message>
    <message>
        <source>Hot corner</source>
        <translation>Aktive Ecke</translation>
    </message>
    <message>
        <source>Hot corner:</source>
        <translation>Aktive Ecke:</translation>
    </message>
    <message>
        <source>Key to hold in the corner</source>
        <translation>In der Ecke zu haltende Taste</translation>
    </message>
    <message>
        <source>Only while holding:</source>
        <translation>Nur mit gedrückter Taste:</translation>
    </message>
    <message>
        <source>Keyboard shortcut:</source>
        <translation>Tastenkürzel:</translation>
    </message>
    <message>
        <source>Any desktop can also show and hide Orrery with a shortcut of its own that runs “orrery --toggle”.</source>
        <translation>Jede Arbeitsumgebung kann Orrery auch mit einem eigenen Tastenkürzel zeigen und ausblenden, das „orrery --toggle“ ausführt.</translation>
    </message>
    <message>
        <source>Columns</source>
        <translation>Spalten</translation>
    </message>
    <message>
        <source>Columns:</source>
        <translation>Spalten:</translation>
    </message>
    <message>
        <source>Rows</source>
        <translation>Zeilen</translation>
    </message>
    <message>
        <source>Rows:</source>
        <translation>Zeilen:</translation>
    </message>
    <message>
        <source>Icon size</source>
        <translation>Symbolgröße</translation>
    </message>
    <message>
        <source>%1 px</source>
        <translation>%1 px</translation>
    </message>
    <message>
        <source>Icon size:</source>
        <translation>Symbolgröße:</translation>
    </message>
    <message>
        <source>Arrangement</source>
        <translation>Anordnung</translation>
    </message>
    <message>
        <source>Arrangement:</source>
        <translation>Anordnung:</translation>
    </message>
    <message>
        <source>Animate showing, hiding and paging</source>
        <translation>Zeigen, Ausblenden und Blättern animieren</translation>
    </message>
    <message>
        <source>Animations:</source>
        <translation>Animationen:</translation>
    </message>
    <message>
        <source>Background</source>
        <translation>Hintergrund</translation>
    </message>
    <message>
        <source>Background:</source>
        <translation>Hintergrund:</translation>
    </message>
    <message>
        <source>Background colour</source>
        <translation>Hintergrundfarbe</translation>
    </message>
    <message>
        <source>Colour:</source>
        <translation>Farbe:</translation>
    </message>
    <message>
        <source>Hidden apps are not shown in Orrery. They stay installed.</source>
        <translation>Ausgeblendete Programme zeigt Orrery nicht. Sie bleiben installiert.</translation>
    </message>
    <message>
        <source>No apps are hidden.</source>
        <translation>Keine Programme sind ausgeblendet.</translation>
    </message>
    <message>
        <source>Sync is not set up on this computer. Folders, order and settings are kept on this computer only.</source>
        <translation>Der Abgleich ist auf diesem Computer nicht eingerichtet. Ordner, Reihenfolge und Einstellungen bleiben nur auf diesem Computer.</translation>
    </message>
    <message>
        <source>Version %1</source>
        <translation>Version %1</translation>
    </message>
    <message>
        <source>A full-screen application launcher.</source>
        <translation>Ein bildschirmfüllender Programmstarter.</translation>
    </message>
    <message>
        <source>Data folder:</source>
        <translation>Datenordner:</translation>
    </message>
    <message>
        <source>Data folder</source>
        <translation>Datenordner</translation>
    </message>
    <message>
        <source>Licence:</source>
        <translation>Lizenz:</translation>
    </message>
    <message>
        <source>Copyright © Lumenfold. All rights reserved.</source>
        <translation>Copyright © Lumenfold. Alle Rechte vorbehalten.</translation>
    </message>
    <message>
        <source>Unhide</source>
        <translation>Einblenden</translation>
    </message>
    <message>
        <source>Unhide %1</source>
        <translation>%1 einblenden</translation>
    </message>
</context>
<context>
    <name>orrery::app::TrayItem</name>
    <message>
        <source>Show Orrery</source>
        <translation>Orrery zeigen</translation>
    </message>
    <message>
        <source>Settings …</source>
        <translation>Einstellungen …</translation>
    </message>
    <message>
        <source>Quit Orrery</source>
        <translation>Orrery beenden</translation>
    </message>
</context>
</TS>
