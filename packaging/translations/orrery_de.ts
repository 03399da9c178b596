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
    <message>
        <source>Run the checks of the hot corner and the shortcut, log each result, and quit.</source>
        <translation>Die Prüfungen der aktiven Ecke und des Tastenkürzels ausführen, jedes Ergebnis protokollieren und beenden.</translation>
    </message>
</context>
<context>
    <name>Overlay</name>
    <message>
        <source>No apps found</source>
        <translation>Keine Programme gefunden</translation>
    </message>
</context>
<context>
    <name>SearchField</name>
    <message>
        <source>Search</source>
        <translation>Suchen</translation>
    </message>
</context>
<context>
    <name>SelectionBar</name>
    <message>
        <source>1 app selected</source>
        <translation>1 Programm ausgewählt</translation>
    </message>
    <message>
        <source>%1 apps selected</source>
        <translation>%1 Programme ausgewählt</translation>
    </message>
    <message>
        <source>Make Folder</source>
        <translation>Ordner erstellen</translation>
    </message>
    <message>
        <source>Done</source>
        <translation>Fertig</translation>
    </message>
    <message>
        <source>Move to Folder</source>
        <translation>In Ordner verschieben</translation>
    </message>
</context>
<context>
    <name>SortSheet</name>
    <message>
        <source>Sort</source>
        <translation>Sortieren</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>SortUndoBar</name>
    <message>
        <source>Sorted by name.</source>
        <translation>Nach Namen sortiert.</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>Rückgängig</translation>
    </message>
</context>
<context>
    <name>TrashSheet</name>
    <message>
        <source>Move to Trash</source>
        <translation>In den Papierkorb verschieben</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
</context>
<context>
    <name>orrery::app::OverlayController</name>
    <message>
        <source>Sort all apps and folders by name?</source>
        <translation>Alle Programme und Ordner nach Namen sortieren?</translation>
    </message>
    <message>
        <source>Folders come first, then apps, each from A to Z. You can undo it right afterwards.</source>
        <translation>Zuerst die Ordner, dann die Programme, jeweils von A bis Z. Gleich danach lässt sich das rückgängig machen.</translation>
    </message>
    <message>
        <source>The arrangement also changes on your other computers.</source>
        <comment>the other computers that share the arrangement through sync</comment>
        <translation>Die Anordnung ändert sich auch auf Ihren anderen Rechnern.</translation>
    </message>
</context>
<context>
    <name>orrery::app::OverlayModel</name>
    <message>
        <source>Move to Trash …</source>
        <translation>In den Papierkorb verschieben …</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>Rename</source>
        <translation>Umbenennen</translation>
    </message>
    <message>
        <source>Dissolve Folder</source>
        <translation>Ordner auflösen</translation>
    </message>
    <message>
        <source>Hide</source>
        <translation>Ausblenden</translation>
    </message>
    <message>
        <source>Remove from Folder</source>
        <translation>Aus dem Ordner entfernen</translation>
    </message>
    <message>
        <source>Sort by Name …</source>
        <translation>Nach Namen sortieren …</translation>
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
    <name>orrery::app::ShortcutField</name>
    <message>
        <source>Record a new keyboard shortcut</source>
        <translation>Neues Tastenkürzel aufnehmen</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>Entfernen</translation>
    </message>
    <message>
        <source>Remove the keyboard shortcut</source>
        <translation>Das Tastenkürzel entfernen</translation>
    </message>
    <message>
        <source>Press the new shortcut …</source>
        <translation>Neues Tastenkürzel drücken …</translation>
    </message>
    <message>
        <source>Record Shortcut</source>
        <translation>Tastenkürzel aufnehmen</translation>
    </message>
</context>
<context>
    <name>orrery::app::TrashFlow</name>
    <message>
        <source>Moving to Trash …</source>
        <translation>Wird in den Papierkorb verschoben …</translation>
    </message>
    <message>
        <source>Move to Trash …</source>
        <translation>In den Papierkorb verschieben …</translation>
    </message>
    <message>
        <source>This is the launcher itself</source>
        <translation>Das ist der Starter selbst</translation>
    </message>
    <message>
        <source>Installed by the system</source>
        <translation>Vom System installiert</translation>
    </message>
    <message>
        <source>Its folder is read-only</source>
        <translation>Sein Ordner ist schreibgeschützt</translation>
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
<context>
    <name>orrery::app::TriggerStatus</name>
    <message>
        <source>This shortcut is already used by another app.</source>
        <comment>Shown next to the shortcut recorder when another program holds the combination</comment>
        <translation>Dieses Tastenkürzel wird bereits von einem anderen Programm verwendet.</translation>
    </message>
    <message>
        <source>Couldn&apos;t register the shortcut.</source>
        <comment>Shown next to the shortcut recorder when the shortcut could not be set up</comment>
        <translation>Das Tastenkürzel konnte nicht eingerichtet werden.</translation>
    </message>
    <message>
        <source>Hot corners aren&apos;t available in this session: the compositor doesn&apos;t let apps follow the pointer across the desktop. Use a keyboard shortcut instead.</source>
        <comment>Shown instead of the hot-corner choice on desktops (Wayland) where it can&apos;t work</comment>
        <translation>Aktive Ecken sind in dieser Sitzung nicht verfügbar: Der Compositor erlaubt Programmen nicht, dem Zeiger über den ganzen Schreibtisch zu folgen. Verwenden Sie stattdessen ein Tastenkürzel.</translation>
    </message>
    <message>
        <source>This desktop doesn&apos;t let apps set a global shortcut. Bind the command “orrery --toggle” to a key in your desktop&apos;s keyboard settings.</source>
        <comment>Shown next to the shortcut recorder where the program can&apos;t hold a shortcut itself</comment>
        <translation>Diese Arbeitsumgebung erlaubt Programmen keine globalen Tastenkürzel. Legen Sie den Befehl „orrery --toggle“ in den Tastatureinstellungen Ihrer Arbeitsumgebung auf eine Taste.</translation>
    </message>
</context>
<context>
    <name>orrery::text</name>
    <message>
        <source>Couldn&apos;t turn on launch at login: </source>
        <comment>Settings, General: followed by the system&apos;s reason</comment>
        <translation>Der Start bei der Anmeldung konnte nicht eingeschaltet werden: </translation>
    </message>
    <message>
        <source>Couldn&apos;t turn off launch at login: </source>
        <comment>Settings, General: followed by the system&apos;s reason</comment>
        <translation>Der Start bei der Anmeldung konnte nicht ausgeschaltet werden: </translation>
    </message>
    <message>
        <source>Please allow it in System Settings (General → Login Items).</source>
        <comment>Settings, General: launch at login awaits the user&apos;s approval</comment>
        <translation>Bitte erlauben Sie ihn in den Systemeinstellungen (Allgemein → Anmeldeobjekte).</translation>
    </message>
    <message>
        <source>It&apos;s no longer installed.</source>
        <comment>Launch error: the app was removed since the list of apps was last read</comment>
        <translation>Es ist nicht mehr installiert.</translation>
    </message>
    <message>
        <source>Its description can&apos;t be read or doesn&apos;t say how to start it.</source>
        <comment>Launch error: the app&apos;s desktop entry or bundle is unreadable or incomplete</comment>
        <translation>Seine Beschreibung kann nicht gelesen werden oder sagt nicht, wie es zu starten ist.</translation>
    </message>
    <message>
        <source>The program it starts wasn&apos;t found.</source>
        <comment>Launch error: the executable the app names does not exist</comment>
        <translation>Das Programm, das es startet, wurde nicht gefunden.</translation>
    </message>
    <message>
        <source>The program it starts isn&apos;t allowed to run.</source>
        <comment>Launch error: the app&apos;s executable lacks execute permission or is no program</comment>
        <translation>Das Programm, das es startet, darf nicht ausgeführt werden.</translation>
    </message>
    <message>
        <source>Starting it failed.</source>
        <comment>Launch error: the system gave no reason</comment>
        <translation>Der Start ist fehlgeschlagen.</translation>
    </message>
    <message>
        <source>Couldn&apos;t open “%1”.</source>
        <comment>Launch error, first sentence; %1 is the app&apos;s name</comment>
        <translation>„%1“ konnte nicht geöffnet werden.</translation>
    </message>
    <message>
        <source>New Folder</source>
        <comment>Default name of a new folder</comment>
        <translation>Neuer Ordner</translation>
    </message>
    <message>
        <source>The file “%1” doesn’t exist.</source>
        <translation>Die Datei „%1“ existiert nicht.</translation>
    </message>
    <message>
        <source>You don’t have permission to access “%1”.</source>
        <translation>Sie haben keine Berechtigung für den Zugriff auf „%1“.</translation>
    </message>
    <message>
        <source>There isn’t enough space on the disk to save “%1”.</source>
        <translation>Auf dem Datenträger ist nicht genug Platz, um „%1“ zu sichern.</translation>
    </message>
    <message>
        <source>A disk error occurred while accessing “%1”.</source>
        <translation>Beim Zugriff auf „%1“ ist ein Datenträgerfehler aufgetreten.</translation>
    </message>
    <message>
        <source>“%1” already exists.</source>
        <translation>„%1“ existiert bereits.</translation>
    </message>
    <message>
        <source>A part of the path to “%1” isn’t a folder.</source>
        <translation>Ein Teil des Pfads zu „%1“ ist kein Ordner.</translation>
    </message>
    <message>
        <source>“%1” is a folder.</source>
        <translation>„%1“ ist ein Ordner.</translation>
    </message>
    <message>
        <source>“%1” couldn’t be accessed (%2).</source>
        <comment>File error shown after a failed save; %1 is the file name, %2 the system&apos;s reason</comment>
        <translation>Auf „%1“ konnte nicht zugegriffen werden (%2).</translation>
    </message>
    <message>
        <source>The damaged layout.json can&apos;t be renamed.</source>
        <comment>Error after saving the arrangement failed: the unreadable file could not be moved aside</comment>
        <translation>Die beschädigte layout.json kann nicht umbenannt werden.</translation>
    </message>
    <message>
        <source>layout.json can&apos;t be read (check access permissions).</source>
        <comment>Error after saving the arrangement failed: the existing file cannot be read</comment>
        <translation>layout.json kann nicht gelesen werden (Zugriffsrechte prüfen).</translation>
    </message>
    <message>
        <source>Not available in this build</source>
        <comment>Sync settings: this build of the program cannot use iCloud</comment>
        <translation>In dieser Ausgabe nicht verfügbar</translation>
    </message>
    <message>
        <source>Not signed in to iCloud</source>
        <comment>Sync settings: no iCloud account is signed in</comment>
        <translation>Nicht bei iCloud angemeldet</translation>
    </message>
    <message>
        <source>iCloud is restricted on this Mac</source>
        <comment>Sync settings: iCloud use is restricted (parental controls or management)</comment>
        <translation>iCloud ist auf diesem Mac eingeschränkt</translation>
    </message>
    <message>
        <source>The damaged sync-state.json can&apos;t be renamed.</source>
        <comment>Error when saving the sync state failed: the damaged file could not be moved aside</comment>
        <translation>Die beschädigte sync-state.json kann nicht umbenannt werden.</translation>
    </message>
    <message>
        <source>sync-state.json can&apos;t be read (check access permissions).</source>
        <comment>Error when saving the sync state failed: the existing file cannot be read</comment>
        <translation>sync-state.json kann nicht gelesen werden (Zugriffsrechte prüfen).</translation>
    </message>
    <message>
        <source>Not all apps could be moved to the Trash</source>
        <comment>Title of the message after moving apps to the Trash failed</comment>
        <translation>Nicht alle Programme konnten in den Papierkorb gelegt werden</translation>
    </message>
    <message>
        <source>Owned by the system.</source>
        <comment>Reason why an app could not be moved to the Trash</comment>
        <translation>Gehört dem System.</translation>
    </message>
    <message>
        <source>These apps belong to the system, not to your user. Deleting them requires your administrator password: open the “Applications” folder in the Finder, drag the app to the Trash and enter the password.</source>
        <comment>How to delete apps that belong to the system</comment>
        <translation>Diese Programme gehören dem System, nicht Ihrem Benutzer. Zum Löschen ist das Administratorpasswort nötig: Öffnen Sie den Ordner „Programme“ im Finder, ziehen Sie das Programm in den Papierkorb und geben Sie das Passwort ein.</translation>
    </message>
    <message>
        <source>The system gave no reason.</source>
        <comment>Reason why an app could not be moved to the Trash, when the system names none</comment>
        <translation>Das System nannte keinen Grund.</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <comment>One line of the list of apps that could not be moved to the Trash: the app&apos;s name and the reason</comment>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>Move %1 apps to the Trash?</source>
        <comment>Title of the confirmation before moving apps to the Trash</comment>
        <translation>%1 Programme in den Papierkorb legen?</translation>
    </message>
    <message>
        <source>… and %1 more</source>
        <comment>End of a shortened list of app names</comment>
        <translation>… und %1 weitere</translation>
    </message>
    <message>
        <source>Still open: %1. Please quit these apps first.</source>
        <comment>Warning about apps that are still running</comment>
        <translation>Noch geöffnet: %1. Bitte beenden Sie diese Programme zuerst.</translation>
    </message>
    <message>
        <source>%1 selected apps stay; they can&apos;t be moved to the Trash.</source>
        <comment>Protected apps that were selected but are skipped</comment>
        <translation>%1 ausgewählte Programme bleiben; sie können nicht in den Papierkorb gelegt werden.</translation>
    </message>
    <message>
        <source>You can restore them from the Trash.</source>
        <comment>Last line of the confirmation before moving apps to the Trash</comment>
        <translation>Sie können sie aus dem Papierkorb wiederherstellen.</translation>
    </message>
    <message>
        <source>Return</source>
        <comment>Name of a key in a shortcut</comment>
        <translation>Eingabe</translation>
    </message>
    <message>
        <source>Enter</source>
        <comment>Name of a key in a shortcut</comment>
        <translation>Enter</translation>
    </message>
    <message>
        <source>Tab</source>
        <comment>Name of a key in a shortcut</comment>
        <translation>Tab</translation>
    </message>
    <message>
        <source>Backspace</source>
        <comment>Name of a key in a shortcut</comment>
        <translation>Rücktaste</translation>
    </message>
    <message>
        <source>Delete</source>
        <comment>Name of a key in a shortcut</comment>
        <translation>Entf</translation>
    </message>
    <message>
        <source>Escape</source>
        <comment>Name of a key in a shortcut</comment>
        <translation>Esc</translation>
    </message>
    <message>
        <source>Left</source>
        <comment>Name of a key in a shortcut</comment>
        <translation>Links</translation>
    </message>
    <message>
        <source>Right</source>
        <comment>Name of a key in a shortcut</comment>
        <translation>Rechts</translation>
    </message>
    <message>
        <source>Down</source>
        <comment>Name of a key in a shortcut</comment>
        <translation>Runter</translation>
    </message>
    <message>
        <source>Up</source>
        <comment>Name of a key in a shortcut</comment>
        <translation>Hoch</translation>
    </message>
    <message>
        <source>Home</source>
        <comment>Name of a key in a shortcut</comment>
        <translation>Pos1</translation>
    </message>
    <message>
        <source>End</source>
        <comment>Name of a key in a shortcut</comment>
        <translation>Ende</translation>
    </message>
    <message>
        <source>Page Up</source>
        <comment>Name of a key in a shortcut</comment>
        <translation>Bild auf</translation>
    </message>
    <message>
        <source>Page Down</source>
        <comment>Name of a key in a shortcut</comment>
        <translation>Bild ab</translation>
    </message>
    <message>
        <source>Your desktop already uses this corner (GNOME: Settings → Multitasking → Hot Corner; KDE: System Settings → Screen Edges). Please turn it off there or choose another corner.</source>
        <comment>Warning in the trigger settings when the chosen hot corner already has an action of the desktop</comment>
        <translation>Ihre Arbeitsumgebung verwendet diese Ecke bereits (GNOME: Einstellungen → Multitasking → Aktive Ecke; KDE: Systemeinstellungen → Bildschirmränder). Bitte schalten Sie sie dort aus oder wählen Sie eine andere Ecke.</translation>
    </message>
    <message>
        <source>You may not change the folder it is in.</source>
        <comment>Reason why an app could not be moved to the Trash: no write permission</comment>
        <translation>Sie dürfen den Ordner, in dem es liegt, nicht ändern.</translation>
    </message>
    <message>
        <source>Its file system has no Trash.</source>
        <comment>Reason why an app could not be moved to the Trash: the disk has no Trash</comment>
        <translation>Sein Dateisystem hat keinen Papierkorb.</translation>
    </message>
    <message>
        <source>It is no longer there.</source>
        <comment>Reason why an app could not be moved to the Trash: the file is gone</comment>
        <translation>Es ist nicht mehr vorhanden.</translation>
    </message>
</context>
<context>
    <name>text</name>
    <message>
        <source>layout.json can&apos;t be read (check access permissions).</source>
        <comment>Error after saving the arrangement failed: the existing file cannot be read</comment>
        <translation>layout.json kann nicht gelesen werden (Zugriffsrechte prüfen).</translation>
    </message>
    <message>
        <source>Space</source>
        <comment>Name of the space bar key</comment>
        <translation>Leertaste</translation>
    </message>
    <message>
        <source>Key %1</source>
        <comment>Name of an unknown key, with its code</comment>
        <translation>Taste %1</translation>
    </message>
    <message>
        <source>This corner is already used in macOS System Settings (Desktop &amp; Dock → Hot Corners). Please turn it off there.</source>
        <comment>Warning in the trigger settings when the chosen hot corner already has a system action</comment>
        <translation>Diese Ecke ist in den macOS-Systemeinstellungen bereits belegt (Schreibtisch &amp; Dock → Aktive Ecken). Bitte schalten Sie sie dort aus.</translation>
    </message>
    <message>
        <source>Ctrl</source>
        <comment>The Control key in a shortcut</comment>
        <translation>Strg</translation>
    </message>
    <message>
        <source>Alt</source>
        <comment>The Alt key in a shortcut</comment>
        <translation>Alt</translation>
    </message>
    <message>
        <source>Shift</source>
        <comment>The Shift key in a shortcut</comment>
        <translation>Umschalt</translation>
    </message>
    <message>
        <source>Super</source>
        <comment>The Super (Windows) key in a shortcut</comment>
        <translation>Super</translation>
    </message>
</context>
</TS>
