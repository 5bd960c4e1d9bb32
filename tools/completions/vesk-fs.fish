# fish completion for vesk-fs

set -l commands pack unpack list test add remove extract tree copy sweep version xml

# Writes the entry names of the archive, the word after the command.
function __vesk_fs_entries
    set -l words (commandline -opc | string match -v -- '-*')
    set -q words[3]; and vesk-fs list -- $words[3] 2>/dev/null
end

complete -c vesk-fs -s h -l help -d 'Describe the program or a command'
complete -c vesk-fs -s q -l quiet -d 'Write no summary, warning or progress'
complete -c vesk-fs -s v -l verbose -d 'Write a line for every entry'

complete -c vesk-fs -n "not __fish_seen_subcommand_from $commands" -f
complete -c vesk-fs -n "not __fish_seen_subcommand_from $commands" -l version -d 'Write the version'
for line in 'pack Pack all files of a directory' 'unpack Unpack an archive' \
        'list Write the names of entries' 'test Check every entry' 'add Add files' \
        'remove Remove entries' 'extract Extract entries' 'tree Write the paths of all files' \
        'copy Copy a file or a directory' 'sweep Delete old files' \
        'version Write the version of an executable' 'xml Read XML'
    set -l words (string split -m 1 ' ' $line)
    complete -c vesk-fs -n "not __fish_seen_subcommand_from $commands" -a $words[1] -d $words[2]
end

complete -c vesk-fs -n '__fish_seen_subcommand_from pack unpack test add extract' -x -l password \
    -d 'Password, visible to other users'
complete -c vesk-fs -n '__fish_seen_subcommand_from pack unpack test add extract' -r -l password-file \
    -d 'File whose first line is the password'
complete -c vesk-fs -n '__fish_seen_subcommand_from unpack' -l no-overwrite -d 'Keep existing files'
complete -c vesk-fs -n '__fish_seen_subcommand_from list' -s l -l long -d 'With sizes and dates'
complete -c vesk-fs -n '__fish_seen_subcommand_from list' -l json -d 'As JSON'
complete -c vesk-fs -n '__fish_seen_subcommand_from list remove extract' -a '(__vesk_fs_entries)'
complete -c vesk-fs -n '__fish_seen_subcommand_from add' -x -l name -d 'Name of the entry'
complete -c vesk-fs -n '__fish_seen_subcommand_from pack add' -x -l encrypt -a 'aes256 traditional' \
    -d 'Encryption of new entries'
complete -c vesk-fs -n '__fish_seen_subcommand_from pack add' -x -s j -l jobs \
    -d 'How many threads compress'
complete -c vesk-fs -n '__fish_seen_subcommand_from pack add' -x -l method -a 'deflate zstd' \
    -d 'Compression of new entries'
complete -c vesk-fs -n '__fish_seen_subcommand_from pack add' -x -l level -a '(seq 0 9)' \
    -d 'From 0, stored, to 9, smallest'
complete -c vesk-fs -n '__fish_seen_subcommand_from pack add unpack extract' -l no-permissions \
    -d 'Do not keep permissions'
complete -c vesk-fs -n '__fish_seen_subcommand_from pack add unpack extract' -l no-times \
    -d 'Do not keep exact times'
complete -c vesk-fs -n '__fish_seen_subcommand_from pack add unpack extract' -l set-id \
    -d 'Keep set-user-id and set-group-id bits'
complete -c vesk-fs -n '__fish_seen_subcommand_from pack add' -l follow-links \
    -d 'Pack what links lead to'
complete -c vesk-fs -n '__fish_seen_subcommand_from pack add' -l no-directories \
    -d 'Pack files and links only'
complete -c vesk-fs -n '__fish_seen_subcommand_from unpack extract' -l no-links \
    -d 'Leave out symbolic links'
complete -c vesk-fs -n '__fish_seen_subcommand_from sweep' -l dry-run -d 'Delete nothing'
complete -c vesk-fs -n '__fish_seen_subcommand_from xml' -a get -d 'Write an element or attribute'
