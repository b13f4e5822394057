<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>Zolvar</name>
    <message numerus="yes">
        <source>%n version(s)</source>
        <translation>
            <numerusform>%n Version</numerusform>
            <numerusform>%n Versionen</numerusform>
        </translation>
    </message>
    <message>
        <source>You</source>
        <translation>Sie</translation>
    </message>
    <message>
        <source>%1 (this one is here)</source>
        <translation>%1 (liegt hier)</translation>
    </message>
    <message>
        <source>you</source>
        <translation>Sie</translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message>
        <source>Written by %1
Changed %2
Logged %3</source>
        <translation>Geschrieben von %1
Geändert %2
Vermerkt %3</translation>
    </message>
    <message>
        <source>File and its versions</source>
        <translation>Datei und ihre Versionen</translation>
    </message>
    <message>
        <source>Changed</source>
        <translation>Geändert</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Größe</translation>
    </message>
    <message>
        <source>Chosen by</source>
        <translation>Gewählt von</translation>
    </message>
    <message>
        <source>Files in conflict</source>
        <translation>Dateien im Konflikt</translation>
    </message>
    <message>
        <source>&amp;Use This Version</source>
        <translation>Version &amp;nehmen</translation>
    </message>
    <message>
        <source>Put the selected version into your folder</source>
        <translation>Die ausgewählte Version in Ihren Ordner legen</translation>
    </message>
    <message>
        <source>&amp;Delete This Version…</source>
        <translation>Version &amp;löschen …</translation>
    </message>
    <message>
        <source>Delete the selected version for everybody</source>
        <translation>Die ausgewählte Version bei allen löschen</translation>
    </message>
    <message>
        <source>&amp;Compare</source>
        <translation>&amp;Vergleichen</translation>
    </message>
    <message>
        <source>Look at the selected version beside the one that is here</source>
        <translation>Die ausgewählte Version neben der ansehen, die hier liegt</translation>
    </message>
    <message>
        <source>&amp;Keep Mine</source>
        <translation>&amp;Meine behalten</translation>
    </message>
    <message>
        <source>Settle the selected files: your version stays</source>
        <translation>Die ausgewählten Dateien klären: Ihre Version bleibt</translation>
    </message>
    <message>
        <source>Use &amp;Theirs</source>
        <translation>D&amp;eren nehmen</translation>
    </message>
    <message>
        <source>Settle the selected files: the others&apos; version stays</source>
        <translation>Die ausgewählten Dateien klären: die Version der anderen bleibt</translation>
    </message>
    <message>
        <source>Use Version &amp;From</source>
        <translation>Nehmen v&amp;on</translation>
    </message>
    <message>
        <source>Settle the selected files: one person&apos;s version stays</source>
        <translation>Die ausgewählten Dateien klären: die Version einer Person bleibt</translation>
    </message>
    <message>
        <source>&amp;Undo Choice</source>
        <translation>Wahl &amp;rückgängig machen</translation>
    </message>
    <message>
        <source>No conflicts</source>
        <translation>Keine Konflikte</translation>
    </message>
    <message>
        <source>When two people change one file at once, both versions are kept, and you choose here.</source>
        <translation>Wenn zwei Personen eine Datei zugleich ändern, bleiben beide Versionen erhalten, und Sie wählen hier.</translation>
    </message>
    <message>
        <source>The other versions go to the Trash of those who have them, and everybody goes on with this one.</source>
        <translation>Die anderen Versionen kommen bei denen, die sie haben, in den Papierkorb, und alle machen mit dieser weiter.</translation>
    </message>
    <message numerus="yes">
        <source>Keep your version of %n file(s)?</source>
        <translation>
            <numerusform>Ihre Version von %n Datei behalten?</numerusform>
            <numerusform>Ihre Version von %n Dateien behalten?</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Your version of %n file(s) stays.</source>
        <translation>
            <numerusform>Ihre Version von %n Datei bleibt.</numerusform>
            <numerusform>Ihre Version von %n Dateien bleibt.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Use the others&apos; version of %n file(s)?</source>
        <translation>
            <numerusform>Die Version der anderen von %n Datei nehmen?</numerusform>
            <numerusform>Die Version der anderen von %n Dateien nehmen?</numerusform>
        </translation>
    </message>
    <message>
        <source>Yours is kept for a while: Undo brings it back.</source>
        <translation>Ihre wird eine Weile aufgehoben: „Rückgängig“ bringt sie zurück.</translation>
    </message>
    <message numerus="yes">
        <source>The others&apos; version of %n file(s) is coming.</source>
        <translation>
            <numerusform>Die Version der anderen von %n Datei kommt.</numerusform>
            <numerusform>Die Version der anderen von %n Dateien kommt.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Use the version from %1 of %n file(s)?</source>
        <translation>
            <numerusform>Die Version von %1 von %n Datei nehmen?</numerusform>
            <numerusform>Die Version von %1 von %n Dateien nehmen?</numerusform>
        </translation>
    </message>
    <message>
        <source>&amp;Use</source>
        <translation>&amp;Nehmen</translation>
    </message>
    <message numerus="yes">
        <source>The version from %1 of %n file(s) is coming.</source>
        <translation>
            <numerusform>Die Version von %1 von %n Datei kommt.</numerusform>
            <numerusform>Die Version von %1 von %n Dateien kommt.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n selected file(s) have no such version and stay as they are.</source>
        <translation>
            <numerusform>%n ausgewählte Datei hat keine solche Version und bleibt, wie sie ist.</numerusform>
            <numerusform>%n ausgewählte Dateien haben keine solche Version und bleiben, wie sie sind.</numerusform>
        </translation>
    </message>
    <message>
        <source>The version from %1 is coming.</source>
        <translation>Die Version von %1 kommt.</translation>
    </message>
    <message>
        <source>It is the one in your folder. It goes to the Trash of everybody who has it, and another version takes its place. Undo brings it back for you.</source>
        <translation>Sie liegt in Ihrem Ordner. Sie kommt bei allen, die sie haben, in den Papierkorb, und eine andere tritt an ihre Stelle. „Rückgängig“ bringt sie für Sie zurück.</translation>
    </message>
    <message>
        <source>It goes to the Trash of everybody who has it. Nothing changes in your folder.</source>
        <translation>Sie kommt bei allen, die sie haben, in den Papierkorb. In Ihrem Ordner ändert sich nichts.</translation>
    </message>
    <message>
        <source>Delete the version from %1 for everybody?</source>
        <translation>Die Version von %1 bei allen löschen?</translation>
    </message>
    <message>
        <source>&amp;Delete</source>
        <translation>&amp;Löschen</translation>
    </message>
    <message>
        <source>The version from %1 is deleted.</source>
        <translation>Die Version von %1 ist gelöscht.</translation>
    </message>
    <message>
        <source>Not everything could be brought back.</source>
        <translation>Nicht alles konnte zurückgebracht werden.</translation>
    </message>
    <message numerus="yes">
        <source>Your version of %n file(s) is back.</source>
        <translation>
            <numerusform>Ihre Version von %n Datei ist zurück.</numerusform>
            <numerusform>Ihre Version von %n Dateien ist zurück.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>The same or the like happened to %n more file(s).</source>
        <translation>
            <numerusform>Dasselbe oder Ähnliches geschah bei %n weiteren Datei.</numerusform>
            <numerusform>Dasselbe oder Ähnliches geschah bei %n weiteren Dateien.</numerusform>
        </translation>
    </message>
    <message>
        <source>Not every choice could be carried out.</source>
        <translation>Nicht jede Wahl konnte ausgeführt werden.</translation>
    </message>
    <message>
        <source>&amp;Undo</source>
        <translation>&amp;Rückgängig</translation>
    </message>
    <message>
        <source>Select a file to see its versions.</source>
        <translation>Wählen Sie eine Datei, um ihre Versionen zu sehen.</translation>
    </message>
    <message>
        <source>Versions of %1</source>
        <translation>Versionen von %1</translation>
    </message>
    <message>
        <source>No version of this file is known yet.</source>
        <translation>Von dieser Datei ist noch keine Version bekannt.</translation>
    </message>
    <message>
        <source>Differences in %1</source>
        <translation>Unterschiede in %1</translation>
    </message>
    <message>
        <source>&amp;Open Both</source>
        <translation>Beide &amp;öffnen</translation>
    </message>
    <message>
        <source>&apos;{}&apos; does not take part in &apos;{}&apos; now.</source>
        <translation>„{}“ nimmt an „{}“ gerade nicht teil.</translation>
    </message>
    <message>
        <source>&apos;{}&apos; has no folder on this computer.</source>
        <translation>„{}“ hat auf diesem Computer keinen Ordner.</translation>
    </message>
    <message>
        <source>&apos;{}&apos; has {} different/conflicting versions.</source>
        <translation>„{}“ hat {} verschiedene, sich widersprechende Versionen.</translation>
    </message>
    <message>
        <source>&apos;{}&apos; holds Zolvar&apos;s own files, which must not be shared.</source>
        <translation>„{}“ enthält Zolvars eigene Dateien, die nicht geteilt werden dürfen.</translation>
    </message>
    <message>
        <source>&apos;{}&apos; in {} is left out: its name or path cannot be shared.</source>
        <translation>„{}“ in {} bleibt außen vor: Name oder Pfad kann nicht geteilt werden.</translation>
    </message>
    <message>
        <source>&apos;{}&apos; in {} is left out: its path is longer than the {} bytes that the system can open.</source>
        <translation>„{}“ in {} bleibt außen vor: Der Pfad ist länger als die {} Bytes, die das System öffnen kann.</translation>
    </message>
    <message>
        <source>&apos;{}&apos; in {} is left out: only files, folders and links are shared.</source>
        <translation>„{}“ in {} bleibt außen vor: Nur Dateien, Ordner und Verknüpfungen werden geteilt.</translation>
    </message>
    <message>
        <source>&apos;{}&apos; in {} is on another drive than before; files missing beneath it are not taken for deleted.</source>
        <translation>„{}“ in {} liegt auf einem anderen Laufwerk als vorher; was darunter fehlt, gilt nicht als gelöscht.</translation>
    </message>
    <message>
        <source>&apos;{}&apos; is in use. Unsubscribe first, or move its folder.</source>
        <translation>„{}“ ist in Gebrauch. Beenden Sie zuerst die Teilnahme, oder verschieben Sie den Ordner.</translation>
    </message>
    <message>
        <source>&apos;{}&apos; is no id of a version.</source>
        <translation>„{}“ bezeichnet keine Version.</translation>
    </message>
    <message>
        <source>&apos;{}&apos; is no path of a file in &apos;{}&apos;.</source>
        <translation>„{}“ ist kein Pfad einer Datei in „{}“.</translation>
    </message>
    <message>
        <source>&apos;{}&apos; is not missing in &apos;{}&apos;.</source>
        <translation>„{}“ fehlt in „{}“ nicht.</translation>
    </message>
    <message>
        <source>&apos;{}&apos; lies in the Trash.</source>
        <translation>„{}“ liegt im Papierkorb.</translation>
    </message>
    <message>
        <source>A setting&apos;s name is not empty and has no &apos;/&apos; and no control character.</source>
        <translation>Der Name einer Einstellung ist nicht leer und hat kein „/“ und kein Steuerzeichen.</translation>
    </message>
    <message>
        <source>An authorization error happened while syncing.

Either you haven&apos;t set a password or you and subscriber &apos;{0}&apos; set different passwords for this Sync Folder. 

Resolve this issue by changing your password or make &apos;{0}&apos; change hers/his.

Note, that each subscribers sets her own password and you will only sync with subscribers with matching passwords. Therefore you can choose to ignore certain subscribers to avoid this warning.</source>
        <translation>Beim Abgleich wurde der Zugang verweigert.

Entweder haben Sie kein Passwort gesetzt, oder Sie und „{0}“ haben für diesen Ordner verschiedene Passwörter.

Ändern Sie Ihr Passwort, oder bitten Sie „{0}“, das dortige zu ändern.

Jeder setzt das eigene Passwort, und abgeglichen wird nur mit denen, deren Passwort übereinstimmt. Deshalb können Sie einzelne Teilnehmer ignorieren, um diese Warnung nicht mehr zu sehen.</translation>
    </message>
    <message>
        <source>Another machine shares &apos;{}&apos; as {}, the name of this one. Two machines with one name would write one log, so the folder was stopped here. Give one of them another host name.</source>
        <translation>Ein anderer Computer teilt „{}“ als {}, unter dem Namen von diesem. Zwei Computer mit einem Namen würden in ein Protokoll schreiben; deshalb wurde der Ordner hier angehalten. Geben Sie einem der beiden einen anderen Rechnernamen.</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Change My Password</source>
        <translation>Mein Passwort ändern</translation>
    </message>
    <message>
        <source>Conflict in Folder &apos;{}&apos;:</source>
        <translation>Konflikt im Ordner „{}“:</translation>
    </message>
    <message>
        <source>Continue</source>
        <translation>Weiter</translation>
    </message>
    <message>
        <source>Could not activate the synced folder &apos;{}&apos;</source>
        <translation>Der synchronisierte Ordner „{}“ konnte nicht aktiviert werden</translation>
    </message>
    <message>
        <source>Could not append to &apos;{}&apos;</source>
        <translation>An „{}“ konnte nicht angehängt werden</translation>
    </message>
    <message>
        <source>Could not ask for the free space of &apos;{}&apos;</source>
        <translation>Der freie Platz von „{}“ konnte nicht erfragt werden</translation>
    </message>
    <message>
        <source>Could not change the synced folder &apos;{}&apos;</source>
        <translation>Der synchronisierte Ordner „{}“ konnte nicht geändert werden</translation>
    </message>
    <message>
        <source>Could not choose a version of &apos;{}&apos;</source>
        <translation>Für „{}“ konnte keine Version gewählt werden</translation>
    </message>
    <message>
        <source>Could not copy &apos;{}&apos;</source>
        <translation>„{}“ konnte nicht kopiert werden</translation>
    </message>
    <message>
        <source>Could not create the Sync Folder &apos;{}&apos;</source>
        <translation>Der synchronisierte Ordner „{}“ konnte nicht angelegt werden</translation>
    </message>
    <message>
        <source>Could not create the folder &apos;{}&apos;</source>
        <translation>Der Ordner „{}“ konnte nicht angelegt werden</translation>
    </message>
    <message>
        <source>Could not delete the password of &apos;{}&apos;</source>
        <translation>Das Passwort von „{}“ konnte nicht gelöscht werden</translation>
    </message>
    <message>
        <source>Could not describe &apos;{}&apos;</source>
        <translation>„{}“ konnte nicht beschrieben werden</translation>
    </message>
    <message>
        <source>Could not fetch a version of &apos;{}&apos;</source>
        <translation>Eine Version von „{}“ konnte nicht geholt werden</translation>
    </message>
    <message>
        <source>Could not fetch from &apos;{}&apos;</source>
        <translation>Von „{}“ konnte nichts geholt werden</translation>
    </message>
    <message>
        <source>Could not find our own change log &apos;{}&apos;</source>
        <translation>Das eigene Protokoll „{}“ wurde nicht gefunden</translation>
    </message>
    <message>
        <source>Could not find the computer &apos;{}&apos;</source>
        <translation>Der Computer „{}“ wurde nicht gefunden</translation>
    </message>
    <message>
        <source>Could not find the file &apos;{}&apos;</source>
        <translation>Die Datei „{}“ wurde nicht gefunden</translation>
    </message>
    <message>
        <source>Could not find the folder &apos;{}&apos;</source>
        <translation>Der Ordner „{}“ wurde nicht gefunden</translation>
    </message>
    <message>
        <source>Could not find the host &apos;{}&apos;</source>
        <translation>Der Rechner „{}“ wurde nicht gefunden</translation>
    </message>
    <message>
        <source>Could not find the kept version &apos;{}&apos;</source>
        <translation>Die aufgehobene Version „{}“ wurde nicht gefunden</translation>
    </message>
    <message>
        <source>Could not find the transfer tool &apos;{}&apos;</source>
        <translation>Das Übertragungsprogramm „{}“ wurde nicht gefunden</translation>
    </message>
    <message>
        <source>Could not find the version &apos;{}&apos;</source>
        <translation>Die Version „{}“ wurde nicht gefunden</translation>
    </message>
    <message>
        <source>Could not flush &apos;{}&apos;</source>
        <translation>„{}“ konnte nicht zu Ende geschrieben werden</translation>
    </message>
    <message>
        <source>Could not label &apos;{}&apos;</source>
        <translation>„{}“ konnte nicht markiert werden</translation>
    </message>
    <message>
        <source>Could not link &apos;{}&apos;</source>
        <translation>„{}“ konnte nicht verknüpft werden</translation>
    </message>
    <message>
        <source>Could not list the files of &apos;{}&apos;</source>
        <translation>Die Dateien von „{}“ konnten nicht aufgelistet werden</translation>
    </message>
    <message>
        <source>Could not load logs &apos;{}&apos;</source>
        <translation>Die Protokolle „{}“ konnten nicht geladen werden</translation>
    </message>
    <message>
        <source>Could not lock &apos;{}&apos;</source>
        <translation>„{}“ konnte nicht gesperrt werden</translation>
    </message>
    <message>
        <source>Could not look at &apos;{}&apos;</source>
        <translation>„{}“ konnte nicht angesehen werden</translation>
    </message>
    <message>
        <source>Could not make a folder for replaced files in &apos;{}&apos;</source>
        <translation>In „{}“ konnte kein Ordner für ersetzte Dateien angelegt werden</translation>
    </message>
    <message>
        <source>Could not make the folder &apos;{}&apos;</source>
        <translation>Der Ordner „{}“ konnte nicht angelegt werden</translation>
    </message>
    <message>
        <source>Could not make the folder of &apos;{}&apos;</source>
        <translation>Der Ordner von „{}“ konnte nicht angelegt werden</translation>
    </message>
    <message>
        <source>Could not make the link &apos;{}&apos;</source>
        <translation>Die Verknüpfung „{}“ konnte nicht angelegt werden</translation>
    </message>
    <message>
        <source>Could not move into place &apos;{}&apos;</source>
        <translation>„{}“ konnte nicht an seinen Platz gebracht werden</translation>
    </message>
    <message>
        <source>Could not move to the Trash &apos;{}&apos;</source>
        <translation>„{}“ konnte nicht in den Papierkorb gelegt werden</translation>
    </message>
    <message>
        <source>Could not open the folder &apos;{}&apos;</source>
        <translation>Der Ordner „{}“ konnte nicht geöffnet werden</translation>
    </message>
    <message>
        <source>Could not reach the keyring &apos;{}&apos;</source>
        <translation>Der Schlüsselbund „{}“ konnte nicht erreicht werden</translation>
    </message>
    <message>
        <source>Could not reach the synced folder &apos;{}&apos;</source>
        <translation>Der synchronisierte Ordner „{}“ konnte nicht erreicht werden</translation>
    </message>
    <message>
        <source>Could not read &apos;{}&apos;</source>
        <translation>„{}“ konnte nicht gelesen werden</translation>
    </message>
    <message>
        <source>Could not read the link &apos;{}&apos;</source>
        <translation>Die Verknüpfung „{}“ konnte nicht gelesen werden</translation>
    </message>
    <message>
        <source>Could not read the password of &apos;{}&apos;</source>
        <translation>Das Passwort von „{}“ konnte nicht gelesen werden</translation>
    </message>
    <message>
        <source>Could not remove &apos;{}&apos;</source>
        <translation>„{}“ konnte nicht entfernt werden</translation>
    </message>
    <message>
        <source>Could not rename &apos;{}&apos;</source>
        <translation>„{}“ konnte nicht umbenannt werden</translation>
    </message>
    <message>
        <source>Could not restore &apos;{}&apos;</source>
        <translation>„{}“ konnte nicht wiederhergestellt werden</translation>
    </message>
    <message>
        <source>Could not restore files in &apos;{}&apos;</source>
        <translation>In „{}“ konnten keine Dateien wiederhergestellt werden</translation>
    </message>
    <message>
        <source>Could not set the password of &apos;{}&apos;</source>
        <translation>Das Passwort von „{}“ konnte nicht gesetzt werden</translation>
    </message>
    <message>
        <source>Could not set the time of &apos;{}&apos;</source>
        <translation>Die Zeit von „{}“ konnte nicht gesetzt werden</translation>
    </message>
    <message>
        <source>Could not start the program &apos;{}&apos;</source>
        <translation>Das Programm „{}“ konnte nicht gestartet werden</translation>
    </message>
    <message>
        <source>Could not start the transfer daemon &apos;{}&apos;</source>
        <translation>Der Übertragungsdienst „{}“ konnte nicht gestartet werden</translation>
    </message>
    <message>
        <source>Could not stop the transfer daemon &apos;{}&apos;</source>
        <translation>Der Übertragungsdienst „{}“ konnte nicht beendet werden</translation>
    </message>
    <message>
        <source>Could not store the password of &apos;{}&apos;</source>
        <translation>Das Passwort von „{}“ konnte nicht gespeichert werden</translation>
    </message>
    <message>
        <source>Could not write &apos;{}&apos;</source>
        <translation>„{}“ konnte nicht geschrieben werden</translation>
    </message>
    <message>
        <source>Deactivate the Folder</source>
        <translation>Den Ordner deaktivieren</translation>
    </message>
    <message>
        <source>Delete Everywhere</source>
        <translation>Überall löschen</translation>
    </message>
    <message>
        <source>Error starting client-server protocol. Too many clients?</source>
        <translation>Das Gespräch mit dem anderen Computer kam nicht zustande. Zu viele zugleich?</translation>
    </message>
    <message>
        <source>Error: Server did not start (exitcode {})</source>
        <translation>Der Übertragungsdienst startete nicht (Status {})</translation>
    </message>
    <message>
        <source>Everything is paused. Resume with: zolvar resume</source>
        <translation>Alles ist angehalten. Fortsetzen mit: zolvar resume</translation>
    </message>
    <message>
        <source>Folder Path not Accessible</source>
        <translation>Ordner nicht erreichbar</translation>
    </message>
    <message>
        <source>Got {} in &apos;{}&apos;:</source>
        <translation>{} in „{}“ erhalten:</translation>
    </message>
    <message>
        <source>Ignoring Subscriber &apos;{}&apos;</source>
        <translation>„{}“ ignorieren</translation>
    </message>
    <message>
        <source>It has no place on this machine.</source>
        <translation>Er hat auf diesem Computer keinen Platz.</translation>
    </message>
    <message>
        <source>It was refused without a reason.</source>
        <translation>Es wurde ohne Angabe eines Grundes verweigert.</translation>
    </message>
    <message>
        <source>Its Zolvar speaks another version of the protocol.</source>
        <translation>Das dortige Zolvar spricht eine andere Fassung des Protokolls.</translation>
    </message>
    <message>
        <source>Its password cannot be read; unlock the keyring and share it again.</source>
        <translation>Sein Passwort kann nicht gelesen werden; entsperren Sie den Schlüsselbund, und teilen Sie den Ordner erneut.</translation>
    </message>
    <message>
        <source>Its password is being read.</source>
        <translation>Sein Passwort wird gerade gelesen.</translation>
    </message>
    <message>
        <source>Left out {} damaged or unsafe lines ({} bytes) of the change log &apos;{}&apos; in {}.</source>
        <translation>{} beschädigte oder unsichere Zeilen ({} Bytes) des Protokolls „{}“ in {} wurden ausgelassen.</translation>
    </message>
    <message>
        <source>Moved Addresses to Trash</source>
        <translation>Adressen in den Papierkorb gelegt</translation>
    </message>
    <message>
        <source>Moved Files to Trash</source>
        <translation>Dateien in den Papierkorb gelegt</translation>
    </message>
    <message>
        <source>Network-Delete files in &apos;{}&apos;?</source>
        <translation>Dateien in „{}“ im ganzen Netz löschen?</translation>
    </message>
    <message>
        <source>No file is missing in &apos;{}&apos;.</source>
        <translation>In „{}“ fehlt keine Datei.</translation>
    </message>
    <message>
        <source>No version was kept at &apos;{}&apos;.</source>
        <translation>Bei „{}“ wurde keine Version aufgehoben.</translation>
    </message>
    <message>
        <source>Not Subscribed to Folder</source>
        <translation>Ordner nicht abonniert</translation>
    </message>
    <message>
        <source>Open Date and Time Preference Pane...</source>
        <translation>Datum und Uhrzeit einstellen …</translation>
    </message>
    <message>
        <source>Open Parent Folder</source>
        <translation>Übergeordneten Ordner öffnen</translation>
    </message>
    <message>
        <source>Open Sharing Preference Pane...</source>
        <translation>Einstellungen der Firewall öffnen …</translation>
    </message>
    <message>
        <source>Others share a folder named &apos;{}&apos; already. Subscribe to it, or choose another name.</source>
        <translation>Andere teilen schon einen Ordner namens „{}“. Abonnieren Sie ihn, oder wählen Sie einen anderen Namen.</translation>
    </message>
    <message>
        <source>Password Failure for Sync Folder
&apos;{}&apos;</source>
        <translation>Passwort abgelehnt für den Ordner
„{}“</translation>
    </message>
    <message>
        <source>Please set the computer&apos;s clock to the current time. Otherwise this could lead to unwanted effects.

The clock is currently off by {:.1f} seconds.

Tip: Switch on &apos;network time&apos; in the &apos;Date and Time&apos; system preferences.</source>
        <translation>Bitte stellen Sie die Uhr des Computers auf die richtige Zeit. Sonst kann es zu unerwünschten Folgen kommen.

Die Uhr geht zurzeit um {} Sekunden falsch.

Tipp: Schalten Sie in den Systemeinstellungen unter „Datum und Uhrzeit“ die Netzwerkzeit ein.</translation>
    </message>
    <message>
        <source>Re-Get</source>
        <translation>Zurückholen</translation>
    </message>
    <message>
        <source>Synced Folder &apos;{}&apos; is not accessible to Zolvar.
Please check the path &apos;{}&apos;.</source>
        <translation>Der synchronisierte Ordner „{}“ ist für Zolvar nicht erreichbar.
Bitte prüfen Sie den Pfad „{}“.</translation>
    </message>
    <message>
        <source>Synchronization Error</source>
        <translation>Fehler beim Abgleich</translation>
    </message>
    <message>
        <source>The Computer&apos;s Firewall Blocks Zolvar</source>
        <translation>Die Firewall des Computers blockiert Zolvar</translation>
    </message>
    <message>
        <source>The Synced Folder &apos;{}&apos; and all contained data will be put in the trash.</source>
        <translation>Der synchronisierte Ordner „{}“ mit allem, was darin ist, wird in den Papierkorb gelegt.</translation>
    </message>
    <message>
        <source>The computer&apos;s clock is off!</source>
        <translation>Die Uhr des Computers geht falsch!</translation>
    </message>
    <message>
        <source>The computer&apos;s clock is off! A change was logged after one that lies in the future. Please set the computer&apos;s clock to the current time.</source>
        <translation>Die Uhr des Computers geht falsch! Eine Änderung wurde nach einer vermerkt, die in der Zukunft liegt. Bitte stellen Sie die Uhr auf die richtige Zeit.</translation>
    </message>
    <message>
        <source>The computer&apos;s firewall is currently blocking the local TCP port {}. Please unblock this port in the System Preferences/Sharing preference pane.
</source>
        <translation>Die Firewall des Computers blockiert zurzeit den lokalen TCP-Port {}. Bitte geben Sie diesen Port in den Systemeinstellungen frei.
</translation>
    </message>
    <message>
        <source>The file &apos;{}&apos; is about to be switched to the version from &apos;{}&apos; with date &apos;{}&apos;.</source>
        <translation>Die Datei „{}“ wird durch die Version von „{}“ vom {} ersetzt.</translation>
    </message>
    <message>
        <source>The folder &apos;{}&apos; was moved to &apos;{}&apos; and is no longer kept in step.</source>
        <translation>Der Ordner „{}“ wurde nach „{}“ verschoben und wird nicht mehr abgeglichen.</translation>
    </message>
    <message>
        <source>The folder is a work area of version control (&apos;{}&apos;). Files of it that change together may arrive one by one on other computers; better let version control carry them.</source>
        <translation>Der Ordner ist ein Arbeitsbereich einer Versionsverwaltung („{}“). Dateien darin, die sich gemeinsam ändern, können auf anderen Computern einzeln ankommen; besser befördert sie die Versionsverwaltung.</translation>
    </message>
    <message>
        <source>The folder must be named &apos;{}&apos;, as the shared folder is.</source>
        <translation>Der Ordner muss „{}“ heißen wie der geteilte Ordner.</translation>
    </message>
    <message>
        <source>The folder you selected is not suitable for sharing. It contains database files (in &apos;{}&apos;) which are not designed to be changed by any application other than its creator. If you try anyway, you are asking for touble.

Please select or create another folder to share.</source>
        <translation>Der gewählte Ordner eignet sich nicht zum Teilen. Er enthält Datenbankdateien (in „{}“), die kein anderes Programm als ihr eigenes ändern darf. Wenn Sie es dennoch versuchen, sind Schwierigkeiten gewiss.

Bitte wählen oder erstellen Sie einen anderen Ordner.</translation>
    </message>
    <message>
        <source>The folder you selected is not suitable for sharing. It overlaps with the existing shared folder &apos;{}&apos;.

Please select or create another folder to share.</source>
        <translation>Der gewählte Ordner eignet sich nicht zum Teilen. Er überschneidet sich mit dem geteilten Ordner „{}“.

Bitte wählen oder erstellen Sie einen anderen Ordner.</translation>
    </message>
    <message>
        <source>The folder&apos;s path cannot be served by the transfer daemon. {}</source>
        <translation>Der Übertragungsdienst kann den Pfad des Ordners nicht anbieten. {}</translation>
    </message>
    <message>
        <source>The folder&apos;s path is too long.</source>
        <translation>Der Pfad des Ordners ist zu lang.</translation>
    </message>
    <message>
        <source>The folder&apos;s path must be a full one, beginning with &apos;/&apos;.</source>
        <translation>Der Pfad des Ordners muss vollständig sein und mit „/“ beginnen.</translation>
    </message>
    <message>
        <source>The folder&apos;s path must begin with &apos;/&apos; and name a folder.</source>
        <translation>Der Pfad des Ordners muss mit „/“ beginnen und einen Ordner nennen.</translation>
    </message>
    <message>
        <source>The link &apos;{}&apos; in {} is left out: it points outside the folder.</source>
        <translation>Die Verknüpfung „{}“ in {} bleibt außen vor: Sie zeigt aus dem Ordner hinaus.</translation>
    </message>
    <message>
        <source>The name &apos;{}&apos; begins or ends with a blank or contains two in a row.</source>
        <translation>Der Name „{}“ beginnt oder endet mit einem Leerzeichen oder enthält zwei hintereinander.</translation>
    </message>
    <message>
        <source>The name &apos;{}&apos; begins with &apos;{}&apos;, which a shared folder cannot have.</source>
        <translation>Der Name „{}“ beginnt mit „{}“; das ist bei einem geteilten Ordner nicht möglich.</translation>
    </message>
    <message>
        <source>The name &apos;{}&apos; contains the character &apos;{}&apos;, which a shared folder cannot have.</source>
        <translation>Der Name „{}“ enthält das Zeichen „{}“; das ist bei einem geteilten Ordner nicht möglich.</translation>
    </message>
    <message>
        <source>The name &apos;{}&apos; has another meaning and cannot be used.</source>
        <translation>Der Name „{}“ hat eine andere Bedeutung und kann nicht verwendet werden.</translation>
    </message>
    <message>
        <source>The name contains a control character.</source>
        <translation>Der Name enthält ein Steuerzeichen.</translation>
    </message>
    <message>
        <source>The name is empty.</source>
        <translation>Der Name ist leer.</translation>
    </message>
    <message>
        <source>The name is not valid UTF-8 text.</source>
        <translation>Der Name ist kein gültiger UTF-8-Text.</translation>
    </message>
    <message>
        <source>The name is {} bytes long; at most {} are possible.</source>
        <translation>Der Name ist {} Bytes lang; höchstens {} sind möglich.</translation>
    </message>
    <message>
        <source>The password of &apos;{}&apos; cannot be read ({}). The folder is neither served nor fetched until the keyring is unlocked or the password is set anew.</source>
        <translation>Das Passwort von „{}“ kann nicht gelesen werden ({}). Der Ordner wird weder angeboten noch geholt, bis der Schlüsselbund entsperrt oder das Passwort neu gesetzt ist.</translation>
    </message>
    <message>
        <source>The password of &apos;{}&apos; cannot be read; nothing is synced.</source>
        <translation>Das Passwort von „{}“ kann nicht gelesen werden; nichts wird abgeglichen.</translation>
    </message>
    <message>
        <source>The passwords of the two sides differ, or one side has none.</source>
        <translation>Die Passwörter der beiden Seiten sind verschieden, oder eine Seite hat keines.</translation>
    </message>
    <message>
        <source>The path to fetch to must be a full one, beginning with &apos;/&apos;.</source>
        <translation>Der Zielpfad muss vollständig sein und mit „/“ beginnen.</translation>
    </message>
    <message>
        <source>The setting &apos;activePools&apos; is a JSON array of names, like [&quot;Docs&quot;].</source>
        <translation>Die Einstellung „activePools“ ist eine JSON-Liste von Namen wie [&quot;Docs&quot;].</translation>
    </message>
    <message>
        <source>The setting &apos;{}&apos; is &apos;yes&apos; or &apos;no&apos;.</source>
        <translation>Die Einstellung „{}“ ist „yes“ oder „no“.</translation>
    </message>
    <message>
        <source>The setting &apos;{}&apos; is a whole number.</source>
        <translation>Die Einstellung „{}“ ist eine ganze Zahl.</translation>
    </message>
    <message>
        <source>The setting &apos;{}&apos; is one of: {}.</source>
        <translation>Die Einstellung „{}“ ist eine von: {}.</translation>
    </message>
    <message>
        <source>The setting &apos;{}&apos; is the name of a host, or none.</source>
        <translation>Die Einstellung „{}“ ist der Name eines Rechners oder leer.</translation>
    </message>
    <message>
        <source>The transfer tool &apos;{}&apos; does not tell its version.</source>
        <translation>Das Übertragungsprogramm „{}“ nennt seine Version nicht.</translation>
    </message>
    <message>
        <source>The transfer tool rsync {}.{}.{} has known security holes. Please update it to 3.4.3 or later.</source>
        <translation>Das Übertragungsprogramm rsync {}.{}.{} hat bekannte Sicherheitslücken. Bitte aktualisieren Sie es auf 3.4.3 oder neuer.</translation>
    </message>
    <message>
        <source>There is a file of that name</source>
        <translation>Es gibt schon eine Datei mit diesem Namen</translation>
    </message>
    <message>
        <source>There is already a Sync Folder with the same name present</source>
        <translation>Es gibt schon einen synchronisierten Ordner mit diesem Namen</translation>
    </message>
    <message>
        <source>There is already a Sync Folder with the same name present.</source>
        <translation>Es gibt schon einen synchronisierten Ordner mit diesem Namen.</translation>
    </message>
    <message>
        <source>There is no folder at &apos;{}&apos;.</source>
        <translation>Bei „{}“ ist kein Ordner.</translation>
    </message>
    <message>
        <source>There is no folder named &apos;{}&apos;.</source>
        <translation>Es gibt keinen Ordner namens „{}“.</translation>
    </message>
    <message>
        <source>There is no open question about &apos;{}&apos;.</source>
        <translation>Zu „{}“ ist keine Frage offen.</translation>
    </message>
    <message>
        <source>Warning: You are not subscribed to the Synced Folder &apos;{}&apos;. The Finder will therefore not necessarily show the current state.</source>
        <translation>Sie haben den synchronisierten Ordner „{}“ nicht abonniert. Die Dateiverwaltung zeigt daher nicht unbedingt den aktuellen Stand.</translation>
    </message>
    <message>
        <source>You are not subscribed to &apos;{}&apos;.</source>
        <translation>Sie haben „{}“ nicht abonniert.</translation>
    </message>
    <message>
        <source>You are subscribed to &apos;{}&apos; already.</source>
        <translation>Sie haben „{}“ schon abonniert.</translation>
    </message>
    <message>
        <source>Zolvar is running already for this user.</source>
        <translation>Zolvar läuft für diesen Benutzer schon.</translation>
    </message>
    <message>
        <source>Zolvar keeps the setting &apos;{}&apos; itself.</source>
        <translation>Die Einstellung „{}“ verwaltet Zolvar selbst.</translation>
    </message>
    <message>
        <source>Zolvar will try to create a folder named &apos;{}&apos; in the folder above.</source>
        <translation>Zolvar wird versuchen, im Ordner oben einen Ordner namens „{}“ anzulegen.</translation>
    </message>
    <message>
        <source>a file has this name</source>
        <translation>eine Datei hat diesen Namen</translation>
    </message>
    <message>
        <source>a folder lies at this place</source>
        <translation>an dieser Stelle liegt ein Ordner</translation>
    </message>
    <message>
        <source>a password has at most 500 bytes and no control characters</source>
        <translation>ein Passwort hat höchstens 500 Bytes und keine Steuerzeichen</translation>
    </message>
    <message>
        <source>it does not end</source>
        <translation>er endet nicht</translation>
    </message>
    <message>
        <source>it has no place on this disk yet</source>
        <translation>er hat auf diesem Laufwerk noch keinen Platz</translation>
    </message>
    <message>
        <source>it is no folder</source>
        <translation>es ist kein Ordner</translation>
    </message>
    <message>
        <source>it is no folder&apos;s path</source>
        <translation>es ist kein Pfad eines Ordners</translation>
    </message>
    <message>
        <source>it is not installed</source>
        <translation>es ist nicht installiert</translation>
    </message>
    <message>
        <source>it was deactivated</source>
        <translation>er wurde deaktiviert</translation>
    </message>
    <message>
        <source>it was left</source>
        <translation>er wurde verlassen</translation>
    </message>
    <message>
        <source>it was removed</source>
        <translation>er wurde entfernt</translation>
    </message>
    <message>
        <source>it was stopped</source>
        <translation>es wurde angehalten</translation>
    </message>
    <message>
        <source>no log of this folder names it</source>
        <translation>kein Protokoll dieses Ordners nennt sie</translation>
    </message>
    <message>
        <source>no port from {} on is free</source>
        <translation>ab {} ist kein Port frei</translation>
    </message>
    <message>
        <source>the file has no such version</source>
        <translation>die Datei hat keine solche Version</translation>
    </message>
    <message>
        <source>the folder at this place is another one, or its drive is not mounted</source>
        <translation>der Ordner an dieser Stelle ist ein anderer, oder sein Laufwerk ist nicht eingehängt</translation>
    </message>
    <message>
        <source>the folder is not accessible</source>
        <translation>der Ordner ist nicht erreichbar</translation>
    </message>
    <message>
        <source>the folder is not active</source>
        <translation>der Ordner ist nicht aktiv</translation>
    </message>
    <message>
        <source>the folder or our own change log in it is not there</source>
        <translation>der Ordner oder unser eigenes Protokoll darin ist nicht da</translation>
    </message>
    <message>
        <source>this version is a deletion</source>
        <translation>diese Version ist eine Löschung</translation>
    </message>
    <message>
        <source>{} address</source>
        <translation>{} Adresse</translation>
    </message>
    <message>
        <source>{} addresses</source>
        <translation>{} Adressen</translation>
    </message>
    <message>
        <source>{} file</source>
        <translation>{} Datei</translation>
    </message>
    <message>
        <source>{} files</source>
        <translation>{} Dateien</translation>
    </message>
    <message>
        <source>{} files have been (re-)moved from Synced Folder &apos;{}&apos; ({}).
Do you want Zolvar to delete them on the network or try to re-get it?</source>
        <translation>Aus dem synchronisierten Ordner „{1}“ wurden Dateien verschoben oder gelöscht ({0}): {2}.
Soll Zolvar sie im ganzen Netz löschen oder versuchen, sie zurückzuholen?</translation>
    </message>
    <message>
        <source>{} versions were kept at &apos;{}&apos;; give the id of one of them.</source>
        <translation>{} Versionen wurden bei „{}“ aufgehoben; nennen Sie die Kennung von einer.</translation>
    </message>
    <message>
        <source>Shared by others on this network</source>
        <translation>Von anderen in diesem Netz geteilt</translation>
    </message>
    <message>
        <source>Progress of the fetch</source>
        <translation>Fortschritt beim Holen</translation>
    </message>
    <message>
        <source>Filter</source>
        <translation>Filter</translation>
    </message>
    <message>
        <source>Filter folders</source>
        <translation>Ordner filtern</translation>
    </message>
    <message>
        <source>Folders</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>My Folders</source>
        <translation>Meine Ordner</translation>
    </message>
    <message>
        <source>On the Network</source>
        <translation>Im Netz</translation>
    </message>
    <message>
        <source>%1, %2</source>
        <translation>%1, %2</translation>
    </message>
    <message>
        <source>Show &amp;Details</source>
        <translation>&amp;Details zeigen</translation>
    </message>
    <message>
        <source>%1 (%2)</source>
        <translation>%1 (%2)</translation>
    </message>
    <message>
        <source>Users</source>
        <translation>Teilnehmer</translation>
    </message>
    <message>
        <source>Missing</source>
        <translation>Fehlend</translation>
    </message>
    <message>
        <source>Conflicts</source>
        <translation>Konflikte</translation>
    </message>
    <message>
        <source>Files vanished from this folder. Shall they come back, or be deleted for everybody?</source>
        <translation>Aus diesem Ordner sind Dateien verschwunden. Sollen sie zurückkommen oder bei allen gelöscht werden?</translation>
    </message>
    <message>
        <source>&amp;Answer…</source>
        <translation>&amp;Antworten …</translation>
    </message>
    <message>
        <source>No folder yet</source>
        <translation>Noch kein Ordner</translation>
    </message>
    <message>
        <source>Share a folder of yours, or drag one here. Folders that others share on this network appear by themselves.</source>
        <translation>Teilen Sie einen Ihrer Ordner, oder ziehen Sie einen hierher. Ordner, die andere in diesem Netz teilen, erscheinen von selbst.</translation>
    </message>
    <message>
        <source>No sync was started.</source>
        <translation>Es wurde kein Abgleich begonnen.</translation>
    </message>
    <message>
        <source>The folder cannot be paused.</source>
        <translation>Der Ordner kann nicht angehalten werden.</translation>
    </message>
    <message>
        <source>Zolvar keeps running</source>
        <translation>Zolvar läuft weiter</translation>
    </message>
    <message>
        <source>Your folders stay in step. The icon in the tray brings the window back and ends the program.</source>
        <translation>Ihre Ordner bleiben im Gleichschritt. Das Symbol in der Leiste bringt das Fenster zurück und beendet das Programm.</translation>
    </message>
    <message>
        <source>&amp;Share Folder…</source>
        <translation>Ordner &amp;teilen …</translation>
    </message>
    <message>
        <source>Offer a folder to everybody on this network</source>
        <translation>Allen in diesem Netz einen Ordner anbieten</translation>
    </message>
    <message>
        <source>&amp;Preferences…</source>
        <translation>&amp;Einstellungen …</translation>
    </message>
    <message>
        <source>&amp;Close Window</source>
        <translation>Fenster &amp;schließen</translation>
    </message>
    <message>
        <source>&amp;Quit Zolvar</source>
        <translation>Zolvar &amp;beenden</translation>
    </message>
    <message>
        <source>&amp;Subscribe…</source>
        <translation>&amp;Abonnieren …</translation>
    </message>
    <message>
        <source>Have this folder on this computer too, and keep it in step</source>
        <translation>Diesen Ordner auch auf diesem Computer haben und im Gleichschritt halten</translation>
    </message>
    <message>
        <source>&amp;Unsubscribe</source>
        <translation>A&amp;bbestellen</translation>
    </message>
    <message>
        <source>Take no more part; the folder and its files stay here</source>
        <translation>Nicht mehr teilnehmen; der Ordner und seine Dateien bleiben hier</translation>
    </message>
    <message>
        <source>&amp;Open</source>
        <translation>&amp;Öffnen</translation>
    </message>
    <message>
        <source>Open the folder in the file browser</source>
        <translation>Den Ordner in der Dateiverwaltung öffnen</translation>
    </message>
    <message>
        <source>S&amp;ync Now</source>
        <translation>&amp;Jetzt abgleichen</translation>
    </message>
    <message>
        <source>Ask everybody for changes now</source>
        <translation>Alle jetzt nach Änderungen fragen</translation>
    </message>
    <message>
        <source>S&amp;ettings…</source>
        <translation>&amp;Ordnereinstellungen …</translation>
    </message>
    <message>
        <source>Password and notices of this folder</source>
        <translation>Passwort und Meldungen dieses Ordners</translation>
    </message>
    <message>
        <source>&amp;Remove…</source>
        <translation>&amp;Entfernen …</translation>
    </message>
    <message>
        <source>Take no more part, and put the folder into the Trash</source>
        <translation>Nicht mehr teilnehmen und den Ordner in den Papierkorb legen</translation>
    </message>
    <message>
        <source>Pause for an &amp;Hour</source>
        <translation>Eine S&amp;tunde anhalten</translation>
    </message>
    <message>
        <source>&amp;Pause Until Resumed</source>
        <translation>An&amp;halten bis zum Fortsetzen</translation>
    </message>
    <message>
        <source>Res&amp;ume</source>
        <translation>&amp;Fortsetzen</translation>
    </message>
    <message>
        <source>&amp;Find Folder</source>
        <translation>Ordner &amp;suchen</translation>
    </message>
    <message>
        <source>&amp;Users</source>
        <translation>&amp;Teilnehmer</translation>
    </message>
    <message>
        <source>&amp;Missing</source>
        <translation>&amp;Fehlend</translation>
    </message>
    <message>
        <source>&amp;Conflicts</source>
        <translation>&amp;Konflikte</translation>
    </message>
    <message>
        <source>Show &amp;Unsubscribed Folders</source>
        <translation>&amp;Nicht abonnierte Ordner zeigen</translation>
    </message>
    <message>
        <source>List the folders that others share as well</source>
        <translation>Auch die Ordner auflisten, die andere teilen</translation>
    </message>
    <message>
        <source>&amp;First Steps</source>
        <translation>&amp;Erste Schritte</translation>
    </message>
    <message>
        <source>&amp;Release Notes</source>
        <translation>&amp;Neuerungen</translation>
    </message>
    <message>
        <source>&amp;About Zolvar</source>
        <translation>&amp;Über Zolvar</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>&amp;Bearbeiten</translation>
    </message>
    <message>
        <source>F&amp;older</source>
        <translation>&amp;Ordner</translation>
    </message>
    <message>
        <source>&amp;Versions</source>
        <translation>&amp;Versionen</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>Close this message</source>
        <translation>Diese Meldung schließen</translation>
    </message>
    <message>
        <source>nobody seen yet</source>
        <translation>noch bei niemandem</translation>
    </message>
    <message>
        <source>%1
Seen at: %2</source>
        <translation>%1
Gesehen bei: %2</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Seen at</source>
        <translation>Gesehen bei</translation>
    </message>
    <message>
        <source>Missing files</source>
        <translation>Fehlende Dateien</translation>
    </message>
    <message>
        <source>&amp;Fetch Now</source>
        <translation>Jetzt &amp;holen</translation>
    </message>
    <message>
        <source>Ask everybody for the missing files now</source>
        <translation>Alle jetzt nach den fehlenden Dateien fragen</translation>
    </message>
    <message>
        <source>&amp;Delete Everywhere…</source>
        <translation>Überall &amp;löschen …</translation>
    </message>
    <message>
        <source>Give the selected files up, here and at everybody</source>
        <translation>Die ausgewählten Dateien aufgeben, hier und bei allen</translation>
    </message>
    <message>
        <source>Nothing is missing</source>
        <translation>Nichts fehlt</translation>
    </message>
    <message>
        <source>Every file that the others have told of is here.</source>
        <translation>Jede Datei, von der die anderen wissen, ist hier.</translation>
    </message>
    <message>
        <source>The files cannot be deleted.</source>
        <translation>Die Dateien können nicht gelöscht werden.</translation>
    </message>
    <message>
        <source>not yet</source>
        <translation>noch nicht</translation>
    </message>
    <message>
        <source>This user&apos;s folder has a password.</source>
        <translation>Der Ordner dieses Teilnehmers hat ein Passwort.</translation>
    </message>
    <message>
        <source>%1, with password</source>
        <translation>%1, mit Passwort</translation>
    </message>
    <message>
        <source>User</source>
        <translation>Teilnehmer</translation>
    </message>
    <message>
        <source>Computer</source>
        <translation>Computer</translation>
    </message>
    <message>
        <source>Last sync</source>
        <translation>Letzter Abgleich</translation>
    </message>
    <message>
        <source>Contact</source>
        <translation>Kontakt</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>The folder cannot be shared.</source>
        <translation>Der Ordner kann nicht geteilt werden.</translation>
    </message>
    <message>
        <source>Subscribing failed.</source>
        <translation>Das Abonnieren ist fehlgeschlagen.</translation>
    </message>
    <message>
        <source>Unsubscribing failed.</source>
        <translation>Das Abbestellen ist fehlgeschlagen.</translation>
    </message>
    <message>
        <source>Removing failed.</source>
        <translation>Das Entfernen ist fehlgeschlagen.</translation>
    </message>
    <message>
        <source>Use this version?</source>
        <translation>Diese Version nehmen?</translation>
    </message>
    <message>
        <source>Paused</source>
        <translation>Angehalten</translation>
    </message>
    <message>
        <source>Paused until %1</source>
        <translation>Angehalten bis %1</translation>
    </message>
    <message>
        <source>Not subscribed</source>
        <translation>Nicht abonniert</translation>
    </message>
    <message>
        <source>Waiting for the drive</source>
        <translation>Wartet auf das Laufwerk</translation>
    </message>
    <message>
        <source>Waiting for the password</source>
        <translation>Wartet auf das Passwort</translation>
    </message>
    <message>
        <source>Waiting for the clock</source>
        <translation>Wartet auf die Uhr</translation>
    </message>
    <message>
        <source>A question is open</source>
        <translation>Eine Frage ist offen</translation>
    </message>
    <message numerus="yes">
        <source>Conflict in %n file(s)</source>
        <translation>
            <numerusform>Konflikt in %n Datei</numerusform>
            <numerusform>Konflikt in %n Dateien</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Fetching %n file(s)</source>
        <translation>
            <numerusform>Holt %n Datei</numerusform>
            <numerusform>Holt %n Dateien</numerusform>
        </translation>
    </message>
    <message>
        <source>Fetching %1 of %2</source>
        <translation>Holt %1 von %2</translation>
    </message>
    <message numerus="yes">
        <source>%n file(s) missing</source>
        <translation>
            <numerusform>%n Datei fehlt</numerusform>
            <numerusform>%n Dateien fehlen</numerusform>
        </translation>
    </message>
    <message>
        <source>Nobody else is here</source>
        <translation>Niemand sonst ist hier</translation>
    </message>
    <message>
        <source>Checking</source>
        <translation>Prüft</translation>
    </message>
    <message>
        <source>In step</source>
        <translation>Im Gleichschritt</translation>
    </message>
    <message>
        <source>Subscribe, and its files come to this computer and stay in step.</source>
        <translation>Abonnieren Sie, und die Dateien kommen hierher und bleiben im Gleichschritt.</translation>
    </message>
    <message>
        <source>Nothing is fetched or sent. Changes here are noted and travel later.</source>
        <translation>Nichts wird geholt oder gesendet. Änderungen hier werden vermerkt und reisen später.</translation>
    </message>
    <message>
        <source>The folder cannot be reached. Nothing happens until it is back.</source>
        <translation>Der Ordner ist nicht erreichbar. Bis er zurück ist, geschieht nichts.</translation>
    </message>
    <message>
        <source>Nobody here has the same password for this folder.</source>
        <translation>Niemand hier hat dasselbe Passwort für diesen Ordner.</translation>
    </message>
    <message>
        <source>This computer&apos;s clock is off. Set it, and the folder goes on.</source>
        <translation>Die Uhr dieses Computers geht falsch. Stellen Sie sie, und der Ordner macht weiter.</translation>
    </message>
    <message>
        <source>Nothing is deleted for the others before you answer.</source>
        <translation>Bei den anderen wird nichts gelöscht, bevor Sie antworten.</translation>
    </message>
    <message>
        <source>Two people changed a file at once. Both versions are kept; choose one.</source>
        <translation>Zwei haben eine Datei zugleich geändert. Beide Versionen sind erhalten; wählen Sie eine.</translation>
    </message>
    <message>
        <source>Nobody who is here now has them. They come once somebody who has them is back.</source>
        <translation>Niemand, der gerade da ist, hat sie. Sie kommen, sobald jemand da ist, der sie hat.</translation>
    </message>
    <message>
        <source>Changes reach the others as soon as they are on the network.</source>
        <translation>Änderungen erreichen die anderen, sobald sie im Netz sind.</translation>
    </message>
    <message numerus="yes">
        <source>%n user(s)</source>
        <translation>
            <numerusform>%n Teilnehmer</numerusform>
            <numerusform>%n Teilnehmer</numerusform>
        </translation>
    </message>
    <message>
        <source>Not on the network</source>
        <translation>Nicht im Netz</translation>
    </message>
    <message numerus="yes">
        <source>In step with %n user(s)</source>
        <translation>
            <numerusform>Im Gleichschritt mit %n</numerusform>
            <numerusform>Im Gleichschritt mit %n</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n missing</source>
        <translation>
            <numerusform>%n fehlt</numerusform>
            <numerusform>%n fehlen</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 of %n file(s)</source>
        <translation>
            <numerusform>%1 von %n Datei</numerusform>
            <numerusform>%1 von %n Dateien</numerusform>
        </translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 von %2</translation>
    </message>
    <message>
        <source>%1/s</source>
        <translation>%1/s</translation>
    </message>
    <message>
        <source>Ignored</source>
        <translation>Ignoriert</translation>
    </message>
    <message>
        <source>Has another password</source>
        <translation>Hat ein anderes Passwort</translation>
    </message>
    <message>
        <source>Seen</source>
        <translation>Gesehen</translation>
    </message>
    <message>
        <source>Connected</source>
        <translation>Verbunden</translation>
    </message>
    <message>
        <source>just now</source>
        <translation>gerade eben</translation>
    </message>
    <message numerus="yes">
        <source>%n minute(s) ago</source>
        <translation>
            <numerusform>vor %n Minute</numerusform>
            <numerusform>vor %n Minuten</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n hour(s) ago</source>
        <translation>
            <numerusform>vor %n Stunde</numerusform>
            <numerusform>vor %n Stunden</numerusform>
        </translation>
    </message>
    <message>
        <source>yesterday, %1</source>
        <translation>gestern, %1</translation>
    </message>
    <message>
        <source>less than a minute left</source>
        <translation>noch weniger als eine Minute</translation>
    </message>
    <message numerus="yes">
        <source>about %n minute(s) left</source>
        <translation>
            <numerusform>noch etwa %n Minute</numerusform>
            <numerusform>noch etwa %n Minuten</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>about %n hour(s) left</source>
        <translation>
            <numerusform>noch etwa %n Stunde</numerusform>
            <numerusform>noch etwa %n Stunden</numerusform>
        </translation>
    </message>
    <message>
        <source>Zolvar: no folder yet</source>
        <translation>Zolvar: noch kein Ordner</translation>
    </message>
    <message>
        <source>Zolvar: everything is in step</source>
        <translation>Zolvar: alles ist im Gleichschritt</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>&amp;Open Zolvar</source>
        <translation>Zolvar ö&amp;ffnen</translation>
    </message>
    <message>
        <source>&amp;Resume</source>
        <translation>Fo&amp;rtsetzen</translation>
    </message>
    <message>
        <source>&amp;Resume (paused until %1)</source>
        <translation>Fo&amp;rtsetzen (angehalten bis %1)</translation>
    </message>
    <message>
        <source>&amp;Pause</source>
        <translation>An&amp;halten</translation>
    </message>
    <message>
        <source>For an &amp;Hour</source>
        <translation>Eine &amp;Stunde</translation>
    </message>
    <message>
        <source>Until &amp;Resumed</source>
        <translation>&amp;Bis zum Fortsetzen</translation>
    </message>
    <message>
        <source>S&amp;ync With</source>
        <translation>Abg&amp;leichen</translation>
    </message>
    <message>
        <source>Fetch this user&apos;s changes now</source>
        <translation>Die Änderungen dieses Teilnehmers jetzt holen</translation>
    </message>
    <message>
        <source>&amp;Ignore</source>
        <translation>&amp;Ignorieren</translation>
    </message>
    <message>
        <source>Say no more about this user&apos;s different password</source>
        <translation>Das abweichende Passwort dieses Teilnehmers nicht mehr melden</translation>
    </message>
    <message>
        <source>Whoever runs Zolvar on this network sees “%1” in the list and can subscribe to it.</source>
        <translation>Wer in diesem Netz Zolvar benutzt, sieht „%1“ in der Liste und kann es abonnieren.</translation>
    </message>
    <message>
        <source>Stop &amp;Ignoring</source>
        <translation>N&amp;icht mehr ignorieren</translation>
    </message>
    <message>
        <source>The user cannot be ignored.</source>
        <translation>Der Teilnehmer kann nicht ignoriert werden.</translation>
    </message>
    <message>
        <source>Fetching the version from %1…</source>
        <translation>Die Version von %1 wird geholt …</translation>
    </message>
    <message>
        <source>The version could not be fetched.</source>
        <translation>Die Version konnte nicht geholt werden.</translation>
    </message>
    <message>
        <source>Version tree</source>
        <translation>Versionsbaum</translation>
    </message>
    <message>
        <source>deleted it, %1</source>
        <translation>gelöscht, %1</translation>
    </message>
    <message>
        <source>added it, %1</source>
        <translation>hinzugefügt, %1</translation>
    </message>
    <message>
        <source>changed it, %1</source>
        <translation>geändert, %1</translation>
    </message>
    <message>
        <source>%1 %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>Logged %1</source>
        <translation>Vermerkt %1</translation>
    </message>
    <message>
        <source>Size %1</source>
        <translation>Größe %1</translation>
    </message>
    <message>
        <source>This one is here.</source>
        <translation>Diese liegt hier.</translation>
    </message>
    <message>
        <source>Chosen by %1</source>
        <translation>Gewählt von %1</translation>
    </message>
    <message>
        <source>A current version: it can be used instead of the one here.</source>
        <translation>Eine aktuelle Version: Sie kann statt der hiesigen genommen werden.</translation>
    </message>
    <message>
        <source>An earlier version: somebody went on from it.</source>
        <translation>Eine frühere Version: Jemand hat an ihr weitergearbeitet.</translation>
    </message>
    <message>
        <source>here</source>
        <translation>hier</translation>
    </message>
    <message>
        <source>chosen by %1</source>
        <translation>gewählt von %1</translation>
    </message>
    <message>
        <source>Deleted {} in &apos;{}&apos;:</source>
        <translation>{} in „{}“ gelöscht:</translation>
    </message>
    <message>
        <source>Error syncing folder &apos;{}&apos; with {} while {}: {}</source>
        <translation>Fehler beim Abgleich des Ordners „{0}“ mit {1} ({2}): {3}</translation>
    </message>
    <message>
        <source>Its name differs from &apos;{}&apos; in case or blanks only, and both cannot be served.</source>
        <translation>Sein Name unterscheidet sich von „{}“ nur durch Groß- und Kleinschreibung oder Leerzeichen; beide zugleich können nicht angeboten werden.</translation>
    </message>
    <message>
        <source>Reveal in Finder</source>
        <translation>In der Dateiverwaltung zeigen</translation>
    </message>
    <message>
        <source>The folder &apos;{}&apos; is not shared: {}</source>
        <translation>Der Ordner „{}“ wird nicht geteilt: {}</translation>
    </message>
    <message>
        <source>Trashed {} in &apos;{}&apos;:</source>
        <translation>{} in „{}“ in den Papierkorb gelegt:</translation>
    </message>
    <message>
        <source>another process holds it</source>
        <translation>ein anderer Prozess hält es fest</translation>
    </message>
    <message>
        <source>it is no file and no link</source>
        <translation>es ist keine Datei und keine Verknüpfung</translation>
    </message>
    <message>
        <source>it is no regular file</source>
        <translation>es ist keine gewöhnliche Datei</translation>
    </message>
    <message>
        <source>the file here was changed a moment ago; try again when that change is recorded</source>
        <translation>die Datei hier wurde eben erst geändert; versuchen Sie es erneut, wenn diese Änderung vermerkt ist</translation>
    </message>
    <message>
        <source>the keyring is locked</source>
        <translation>der Schlüsselbund ist gesperrt</translation>
    </message>
    <message>
        <source>this version is chosen already</source>
        <translation>diese Version ist schon gewählt</translation>
    </message>
    <message>
        <source>this version is dated so far in the future that nothing can follow it</source>
        <translation>diese Version liegt so weit in der Zukunft, dass ihr nichts folgen kann</translation>
    </message>
    <message>
        <source>this version is not a current one: it was changed or deleted since</source>
        <translation>diese Version ist keine aktuelle: Sie wurde seither geändert oder gelöscht</translation>
    </message>
    <message>
        <source>&apos;{0}&apos; is paused. Resume it with: zolvar resume &apos;{0}&apos;</source>
        <translation>„{0}“ ist angehalten. Fortsetzen mit: zolvar resume &apos;{0}&apos;</translation>
    </message>
    <message>
        <source>authentication failed</source>
        <translation>der Zugang wurde verweigert</translation>
    </message>
    <message>
        <source>error in rsync protocol data stream</source>
        <translation>Fehler im Datenstrom von rsync</translation>
    </message>
    <message>
        <source>loading changes</source>
        <translation>Änderungen laden</translation>
    </message>
    <message>
        <source>socket connection failed.</source>
        <translation>die Verbindung kam nicht zustande.</translation>
    </message>
    <message>
        <source>some files could not be transferred</source>
        <translation>einige Dateien konnten nicht übertragen werden</translation>
    </message>
    <message>
        <source>Could not empty &apos;{}&apos;</source>
        <translation>„{}“ konnte nicht geleert werden</translation>
    </message>
    <message>
        <source>The folder &apos;{}&apos; cannot be shared.</source>
        <translation>Der Ordner „{}“ kann nicht geteilt werden.</translation>
    </message>
    <message>
        <source>There is no setting &apos;{}&apos;.</source>
        <translation>Es gibt keine Einstellung „{}“.</translation>
    </message>
    <message>
        <source>it is not ready yet; try again when it has been looked through</source>
        <translation>er ist noch nicht bereit; versuchen Sie es erneut, wenn er durchgesehen ist</translation>
    </message>
    <message>
        <source>it is not where it lay; mount its drive, or bring it back</source>
        <translation>er liegt nicht mehr, wo er lag; hängen Sie sein Laufwerk ein, oder bringen Sie ihn zurück</translation>
    </message>
    <message>
        <source>About Zolvar</source>
        <translation>Über Zolvar</translation>
    </message>
    <message>
        <source>Keeps folders in step between the computers of one local network, with no server and no account.</source>
        <translation>Hält Ordner auf den Computern eines lokalen Netzes im Gleichschritt, ohne Server und ohne Konto.</translation>
    </message>
    <message>
        <source>Version:</source>
        <translation>Version:</translation>
    </message>
    <message>
        <source>You are:</source>
        <translation>Sie sind:</translation>
    </message>
    <message>
        <source>Reached at port:</source>
        <translation>Erreichbar am Port:</translation>
    </message>
    <message>
        <source>nobody reaches you now</source>
        <translation>niemand erreicht Sie gerade</translation>
    </message>
    <message>
        <source>License:</source>
        <translation>Lizenz:</translation>
    </message>
    <message>
        <source>GNU General Public License, version 3. It comes without any warranty.</source>
        <translation>GNU General Public License, Version 3. Ohne jede Gewährleistung.</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>About &amp;Qt</source>
        <translation>Über &amp;Qt</translation>
    </message>
    <message>
        <source>Unit</source>
        <translation>Einheit</translation>
    </message>
    <message>
        <source>&amp;Later</source>
        <translation>&amp;Später</translation>
    </message>
    <message>
        <source>The &amp;files:</source>
        <translation>Die &amp;Dateien:</translation>
    </message>
    <message>
        <source>Re-Get brings the files back here from the others. Delete Everywhere moves them to the Trash of everybody who has them.</source>
        <translation>„Zurückholen“ bringt die Dateien von den anderen wieder hierher. „Überall löschen“ legt sie bei allen, die sie haben, in den Papierkorb.</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>&amp;Choose…</source>
        <translation>&amp;Wählen …</translation>
    </message>
    <message>
        <source>Choose the folder</source>
        <translation>Den Ordner wählen</translation>
    </message>
    <message>
        <source>Select Folder</source>
        <translation>Ordner wählen</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>Passwort</translation>
    </message>
    <message>
        <source>Show the password</source>
        <translation>Das Passwort zeigen</translation>
    </message>
    <message>
        <source>Preferences</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>&amp;General</source>
        <translation>&amp;Allgemein</translation>
    </message>
    <message>
        <source>&amp;Transfers</source>
        <translation>&amp;Übertragung</translation>
    </message>
    <message>
        <source>&amp;Notices</source>
        <translation>&amp;Meldungen</translation>
    </message>
    <message>
        <source>&amp;Save</source>
        <translation>&amp;Speichern</translation>
    </message>
    <message>
        <source>Same as the system</source>
        <translation>Wie das System</translation>
    </message>
    <message>
        <source>Start Zolvar at &amp;login</source>
        <translation>Zolvar beim An&amp;melden starten</translation>
    </message>
    <message>
        <source>&amp;Keep folders in step by themselves</source>
        <translation>Ordner von selbst im &amp;Gleichschritt halten</translation>
    </message>
    <message>
        <source>&amp;Quick pace</source>
        <translation>S&amp;chnelles Tempo</translation>
    </message>
    <message>
        <source>L&amp;anguage:</source>
        <translation>S&amp;prache:</translation>
    </message>
    <message>
        <source>While this is off, all folders are paused: nothing is fetched, and nothing is given to others.</source>
        <translation>Solange dies aus ist, sind alle Ordner angehalten: Nichts wird geholt, und nichts wird anderen gegeben.</translation>
    </message>
    <message>
        <source>Changes travel within seconds instead of a minute or two, for a little more work. Takes effect at the next start.</source>
        <translation>Änderungen reisen in Sekunden statt in ein bis zwei Minuten, mit etwas mehr Arbeit. Gilt ab dem nächsten Start.</translation>
    </message>
    <message>
        <source>KB/s</source>
        <translation>KB/s</translation>
    </message>
    <message>
        <source>MB/s</source>
        <translation>MB/s</translation>
    </message>
    <message>
        <source>No limit</source>
        <translation>Keine Grenze</translation>
    </message>
    <message>
        <source>Most that is sent</source>
        <translation>Was höchstens gesendet wird</translation>
    </message>
    <message>
        <source>Most that is fetched</source>
        <translation>Was höchstens geholt wird</translation>
    </message>
    <message>
        <source>Keep nothing</source>
        <translation>Nichts aufheben</translation>
    </message>
    <message>
        <source> days</source>
        <translation> Tage</translation>
    </message>
    <message>
        <source>Most that is kept</source>
        <translation>Was höchstens aufgehoben wird</translation>
    </message>
    <message>
        <source>MB</source>
        <translation>MB</translation>
    </message>
    <message>
        <source>GB</source>
        <translation>GB</translation>
    </message>
    <message>
        <source>&amp;Send at most:</source>
        <translation>Höchstens s&amp;enden:</translation>
    </message>
    <message>
        <source>&amp;Fetch at most:</source>
        <translation>Höchstens &amp;holen:</translation>
    </message>
    <message>
        <source>For each user who fetches or is fetched from.</source>
        <translation>Für jeden, der holt oder von dem geholt wird.</translation>
    </message>
    <message>
        <source>Keep &amp;versions for:</source>
        <translation>&amp;Versionen aufheben:</translation>
    </message>
    <message>
        <source>For each folder at &amp;most:</source>
        <translation>Höchstens &amp;je Ordner:</translation>
    </message>
    <message>
        <source>What others&apos; changes replace in your folders is kept so that you can have it back.</source>
        <translation>Was Änderungen anderer in Ihren Ordnern ersetzen, wird aufgehoben, damit Sie es zurückholen können.</translation>
    </message>
    <message>
        <source>Show all &amp;warnings again</source>
        <translation>Wieder alle &amp;Warnungen zeigen</translation>
    </message>
    <message>
        <source>Show notices about these &amp;folders:</source>
        <translation>Meldungen über diese &amp;Ordner zeigen:</translation>
    </message>
    <message>
        <source>Conflicts are shown either way.</source>
        <translation>Konflikte werden in jedem Fall gemeldet.</translation>
    </message>
    <message>
        <source>Do &amp;not ask again</source>
        <translation>&amp;Nicht mehr fragen</translation>
    </message>
    <message>
        <source>First Steps</source>
        <translation>Erste Schritte</translation>
    </message>
    <message>
        <source>Folders in step, in three steps</source>
        <translation>Ordner im Gleichschritt, in drei Schritten</translation>
    </message>
    <message>
        <source>Share</source>
        <translation>Teilen</translation>
    </message>
    <message>
        <source>Choose a folder, or drag it onto the window. Everybody on this network who runs Zolvar sees it by its name.</source>
        <translation>Wählen Sie einen Ordner, oder ziehen Sie ihn auf das Fenster. Alle in diesem Netz, die Zolvar benutzen, sehen ihn unter seinem Namen.</translation>
    </message>
    <message>
        <source>Subscribe</source>
        <translation>Abonnieren</translation>
    </message>
    <message>
        <source>On the other computers, select the folder in the list and subscribe to it. Its files arrive.</source>
        <translation>Wählen Sie auf den anderen Computern den Ordner in der Liste, und abonnieren Sie ihn. Seine Dateien kommen an.</translation>
    </message>
    <message>
        <source>Work together</source>
        <translation>Zusammenarbeiten</translation>
    </message>
    <message>
        <source>Everybody&apos;s changes travel by themselves. When two people change one file at once, both versions are kept and you choose.</source>
        <translation>Die Änderungen aller reisen von selbst. Wenn zwei eine Datei zugleich ändern, bleiben beide Versionen erhalten, und Sie wählen.</translation>
    </message>
    <message>
        <source>%1. %2</source>
        <translation>%1. %2</translation>
    </message>
    <message>
        <source>&amp;Share a Folder…</source>
        <translation>Einen Ordner &amp;teilen …</translation>
    </message>
    <message>
        <source>The window shows every folder, who has it, what is missing and what conflicts, and settles conflicts for several files at once. A choice can be undone.</source>
        <translation>Das Fenster zeigt jeden Ordner, wer ihn hat, was fehlt und was sich widerspricht, und klärt Konflikte für mehrere Dateien zugleich. Eine Wahl lässt sich rückgängig machen.</translation>
    </message>
    <message>
        <source>The version tree draws who changed a file, when, and from which version.</source>
        <translation>Der Versionsbaum zeigt, wer eine Datei wann und von welcher Version aus geändert hat.</translation>
    </message>
    <message>
        <source>Folders can be paused for an hour or until you resume them.</source>
        <translation>Ordner lassen sich für eine Stunde oder bis zum Fortsetzen anhalten.</translation>
    </message>
    <message>
        <source>What others&apos; changes replace in your folders is kept for a month, so that you can have it back.</source>
        <translation>Was Änderungen anderer in Ihren Ordnern ersetzen, wird einen Monat lang aufgehoben, damit Sie es zurückholen können.</translation>
    </message>
    <message>
        <source>A file .zolvarignore at the top of a folder names what stays out of it.</source>
        <translation>Eine Datei .zolvarignore zuoberst in einem Ordner nennt, was außen vor bleibt.</translation>
    </message>
    <message>
        <source>Release Notes</source>
        <translation>Neuerungen</translation>
    </message>
    <message>
        <source>New in Zolvar %1</source>
        <translation>Neu in Zolvar %1</translation>
    </message>
    <message>
        <source>Folder Settings</source>
        <translation>Ordnereinstellungen</translation>
    </message>
    <message>
        <source>Settings of &apos;%1&apos;</source>
        <translation>Einstellungen von „%1“</translation>
    </message>
    <message>
        <source>It has no folder on this computer.</source>
        <translation>Er hat auf diesem Computer keinen Ordner.</translation>
    </message>
    <message>
        <source>&amp;Password:</source>
        <translation>&amp;Passwort:</translation>
    </message>
    <message>
        <source>The folder has a password</source>
        <translation>Der Ordner hat ein Passwort</translation>
    </message>
    <message>
        <source>Unchanged</source>
        <translation>Unverändert</translation>
    </message>
    <message>
        <source>New password</source>
        <translation>Neues Passwort</translation>
    </message>
    <message>
        <source>Show &amp;notices about this folder</source>
        <translation>&amp;Meldungen über diesen Ordner zeigen</translation>
    </message>
    <message>
        <source>The keyring does not give the password. Unlock it, or type the password again.</source>
        <translation>Der Schlüsselbund gibt das Passwort nicht heraus. Entsperren Sie ihn, oder geben Sie das Passwort erneut ein.</translation>
    </message>
    <message>
        <source>Everybody on the network can have the files then.</source>
        <translation>Alle im Netz können die Dateien dann haben.</translation>
    </message>
    <message>
        <source>Each user sets the password on the own computer. Files travel between those who have the same one.</source>
        <translation>Jeder setzt das Passwort am eigenen Computer. Dateien reisen zwischen denen, die dasselbe haben.</translation>
    </message>
    <message>
        <source>The settings could not be saved.</source>
        <translation>Die Einstellungen konnten nicht gespeichert werden.</translation>
    </message>
    <message>
        <source>Share Folder</source>
        <translation>Ordner teilen</translation>
    </message>
    <message>
        <source>Share a folder</source>
        <translation>Einen Ordner teilen</translation>
    </message>
    <message>
        <source>Everybody on this network who runs Zolvar sees it by its name and can subscribe to it. The files stay where they are.</source>
        <translation>Alle in diesem Netz, die Zolvar benutzen, sehen ihn unter seinem Namen und können ihn abonnieren. Die Dateien bleiben, wo sie sind.</translation>
    </message>
    <message>
        <source>None: everybody can subscribe</source>
        <translation>Keines: Alle können abonnieren</translation>
    </message>
    <message>
        <source>Whoever enters the same password gets the files.</source>
        <translation>Wer dasselbe Passwort angibt, bekommt die Dateien.</translation>
    </message>
    <message>
        <source>&amp;Folder:</source>
        <translation>&amp;Ordner:</translation>
    </message>
    <message>
        <source>&amp;Share</source>
        <translation>&amp;Teilen</translation>
    </message>
    <message>
        <source>Subscribe to &apos;%1&apos;</source>
        <translation>„%1“ abonnieren</translation>
    </message>
    <message>
        <source>Required</source>
        <translation>Nötig</translation>
    </message>
    <message>
        <source>None</source>
        <translation>Keines</translation>
    </message>
    <message>
        <source>Ask the others for it: files come from those who have the same one.</source>
        <translation>Fragen Sie die anderen danach: Dateien kommen von denen, die dasselbe haben.</translation>
    </message>
    <message>
        <source>&amp;Subscribe</source>
        <translation>&amp;Abonnieren</translation>
    </message>
    <message numerus="yes">
        <source>Shared by %n user(s).</source>
        <translation>
            <numerusform>Geteilt von %n Teilnehmer.</numerusform>
            <numerusform>Geteilt von %n Teilnehmern.</numerusform>
        </translation>
    </message>
    <message>
        <source>Shared by %1.</source>
        <translation>Geteilt von %1.</translation>
    </message>
    <message>
        <source>The files arrive in a folder on this computer and stay in step.</source>
        <translation>Die Dateien kommen in einen Ordner auf diesem Computer und bleiben im Gleichschritt.</translation>
    </message>
    <message>
        <source>The folder is not there.</source>
        <translation>Der Ordner ist nicht da.</translation>
    </message>
    <message>
        <source>Its drive is not connected. Connect it, and try again.</source>
        <translation>Sein Laufwerk ist nicht verbunden. Verbinden Sie es, und versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>Unsubscribe from &apos;%1&apos;?</source>
        <translation>„%1“ abbestellen?</translation>
    </message>
    <message>
        <source>The files stay on this computer, but changes no longer come here or go to the others. You can subscribe again at any time.</source>
        <translation>Die Dateien bleiben auf diesem Computer, aber Änderungen kommen nicht mehr her und gehen nicht mehr zu den anderen. Sie können jederzeit wieder abonnieren.</translation>
    </message>
    <message>
        <source>Remove &apos;%1&apos;?</source>
        <translation>„%1“ entfernen?</translation>
    </message>
    <message>
        <source>&amp;Move to Trash</source>
        <translation>In den &amp;Papierkorb legen</translation>
    </message>
    <message>
        <source>There is no address book.</source>
        <translation>Es gibt kein Adressbuch.</translation>
    </message>
    <message>
        <source>There is no group named &apos;{}&apos; in the address book.</source>
        <translation>Im Adressbuch gibt es keine Gruppe namens „{}“.</translation>
    </message>
    <message>
        <source>There is no group named &apos;{}&apos; in the address book. There are: {}.</source>
        <translation>Im Adressbuch gibt es keine Gruppe namens „{}“. Es gibt: {}.</translation>
    </message>
    <message>
        <source>You are not subscribed to any folder yet.</source>
        <translation>Sie haben noch keinen Ordner abonniert.</translation>
    </message>
    <message>
        <source>Changed in two places at once. Nothing is lost: every version is kept until you choose.</source>
        <translation>An zwei Orten zugleich geändert. Nichts ist verloren: Jede Version bleibt, bis Sie wählen.</translation>
    </message>
    <message>
        <source>Share C&amp;ontacts…</source>
        <translation>K&amp;ontakte teilen …</translation>
    </message>
    <message>
        <source>Offer a group of the address book to everybody here</source>
        <translation>Allen hier eine Gruppe des Adressbuchs anbieten</translation>
    </message>
    <message>
        <source>Share Contacts</source>
        <translation>Kontakte teilen</translation>
    </message>
    <message>
        <source>Share a group of contacts</source>
        <translation>Eine Gruppe von Kontakten teilen</translation>
    </message>
    <message>
        <source>Who subscribes to it has these contacts in the own address book, and changes travel both ways. Notes stay where they are.</source>
        <translation>Wer sie abonniert, hat diese Kontakte im eigenen Adressbuch, und Änderungen reisen in beide Richtungen. Notizen bleiben, wo sie sind.</translation>
    </message>
    <message>
        <source>&amp;Group:</source>
        <translation>&amp;Gruppe:</translation>
    </message>
    <message>
        <source>There are no groups in the address book.</source>
        <translation>Im Adressbuch gibt es keine Gruppen.</translation>
    </message>
    <message>
        <source>The contacts cannot be shared.</source>
        <translation>Die Kontakte können nicht geteilt werden.</translation>
    </message>
    <message>
        <source>a folder with files in it lies there; move these away first</source>
        <translation>dort liegt ein Ordner mit Dateien; bringen Sie diese zuerst weg</translation>
    </message>
    <message>
        <source>Others have contacts whose names are like those of people in your address book ({}). Click to open them there, and merge those that are the same.</source>
        <translation>Andere haben Kontakte, deren Namen denen von Personen in Ihrem Adressbuch gleichen ({}). Klicken Sie, um sie dort zu öffnen, und führen Sie zusammen, was dasselbe ist.</translation>
    </message>
    <message>
        <source>Merge Contacts in &apos;{}&apos;?</source>
        <translation>Kontakte in „{}“ zusammenführen?</translation>
    </message>
    <message>
        <source>a file could not be read or written; perhaps a disk is full, or its drive gone</source>
        <translation>eine Datei konnte nicht gelesen oder geschrieben werden; vielleicht ist ein Datenträger voll oder nicht mehr da</translation>
    </message>
    <message>
        <source>a folder or file could not be opened</source>
        <translation>ein Ordner oder eine Datei konnte nicht geöffnet werden</translation>
    </message>
    <message>
        <source>nothing came for too long</source>
        <translation>zu lange kam nichts an</translation>
    </message>
    <message>
        <source>some files vanished over there before they could be fetched</source>
        <translation>einige Dateien verschwanden dort, bevor sie geholt werden konnten</translation>
    </message>
    <message>
        <source>the other computer did not answer in time</source>
        <translation>der andere Computer hat nicht rechtzeitig geantwortet</translation>
    </message>
    <message>
        <source>the transfer tool ended with status {}</source>
        <translation>das Übertragungswerkzeug endete mit Status {}</translation>
    </message>
    <message>
        <source>the transfer tool was ended by signal {}</source>
        <translation>das Übertragungswerkzeug wurde durch Signal {} beendet</translation>
    </message>
    <message>
        <source>the transfer tools of the two computers do not understand each other</source>
        <translation>die Übertragungswerkzeuge der beiden Computer verstehen einander nicht</translation>
    </message>
    <message>
        <source>the transfer was ended</source>
        <translation>die Übertragung wurde beendet</translation>
    </message>
    <message>
        <source>there was not enough memory</source>
        <translation>der Arbeitsspeicher reichte nicht</translation>
    </message>
    <message>
        <source>Something is in the way</source>
        <translation>Etwas steht im Weg</translation>
    </message>
    <message>
        <source>Last sync failed</source>
        <translation>Letzter Abgleich misslang</translation>
    </message>
    <message>
        <source>Nobody can fetch from this computer. %1</source>
        <translation>Von diesem Computer kann niemand etwas holen. %1</translation>
    </message>
    <message>
        <source>another file was put there meanwhile</source>
        <translation>inzwischen wurde dort eine andere Datei abgelegt</translation>
    </message>
</context>
</TS>
