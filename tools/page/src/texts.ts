/// Every word that the page itself says. What the library and the check say comes from them.

import type { DeviceSettings, Stage } from './engine/types';

/// "1,234"; making such a writer takes long, so there is one.
const numbers = new Intl.NumberFormat('en');
export const digits = (number: number): string => numbers.format(number);

const count = (number: number, one: string, many: string): string => `${digits(number)} ${number === 1 ? one : many}`;

/// What the workers and those who run them say.
export const engineTexts = {
    noFile: (id: number): string => `There is no file ${id}.`,
    broken: (why: string): string => `The file broke the library's worker: ${why}.`,
    tookTooLong: 'it took too long and was ended',
    ended: 'it ended',
    unreadable: 'it sent what cannot be read',
    tooLarge: (name: string): string => `${name}: is too large for a subtitle file`,
    cannotBeRead: (name: string, why: string): string => `${name}: cannot be read: ${why}`,
};

/// The inspector's words for a terminal, and what the page says in their place.
const terminalWords: [string, string][] = [
    ['--native overrules', 'the television settings overrule'],
    ['choose another with --native', 'choose another in the television settings'],
    ['see --fps', 'see the television settings'],
    ['from --fps', 'from the television settings'],
    ['vxsub check says why, --log shows what it says', 'see the findings, and what the library logged'],
    ['--log shows what it says', 'see what the library logged'],
    ['; choose the format with --type (see vxsub --help)', '; a format is known by the ending of its name'],
    ['--class writes one alone', 'a class writes one alone'],
    ['--fps', 'the rate in the television settings'],
];

export const inPage = (said: string): string =>
    terminalWords.reduce((words, [terminal, page]) => words.replaceAll(terminal, page), said);

/// Short forms of numbers with units.
export const unitTexts = {
    bytes: (bytes: number): string => count(bytes, 'byte', 'bytes'),
    sizes: { gibi: 'GiB', mebi: 'MiB', kibi: 'KiB' },
    seconds: (seconds: number): string => `${seconds} s`,
    minutes: (minutes: number, seconds: number): string => `${minutes} min ${seconds} s`,
    hours: (hours: number, minutes: number): string => `${hours} h ${minutes} min`,
};

export const texts = {
    language: 'en',
    title: 'vxsub inspector',
    noScript: 'This page runs the subtitle library in the browser and needs JavaScript.',
    close: 'Close',

    header: {
        open: 'Open files',
        device: 'Television settings',
        deviceWords: ({ language, framesPerSecond, codePage, surfaceWidth, surfaceHeight }: DeviceSettings): string =>
            [`${surfaceWidth} × ${surfaceHeight}`, language, codePage, framesPerSecond && `${framesPerSecond} fps`]
                .filter(Boolean)
                .join(' · '),
        deviceLabel: (settings: DeviceSettings): string => `Television settings: ${texts.header.deviceWords(settings)}`,
        theme: 'Light or dark',
        keys: 'Keys and licences',
    },

    drop: {
        title: 'Drop a subtitle file',
        pair: 'See what the television shows of it, and why something is missing. A VobSub .idx comes with its .sub.',
        choose: 'Choose files',
        here: 'Drop to open',
        formats: 'SubRip, SubStation Alpha, SAMI, TXT, MicroDVD, SubViewer, DVB text and VobSub',
        private: 'Your files stay on this device: the page sends nothing anywhere.',
    },

    files: {
        label: 'Files',
        waiting: 'waiting',
        opening: 'opening …',
        refused: 'Not shown',
        lonely: 'One half of a pair',
        broken: 'This file broke the library',
        right: (right: number, meant: number): string =>
            right === meant ? `all ${digits(meant)} show as meant` : `${digits(right)} of ${digits(meant)} as meant`,
        damaged: 'The page holds this file, but it cannot be unpacked: the page is damaged.',
        remove: (name: string): string => `Remove ${name}`,
        progress: (name: string): string => `Progress of ${name}`,
    },

    progress: {
        reading: 'reading …',
        scanning: 'the library opens it …',
        tables: 'listing the entries …',
        texts: 'fetching the texts …',
        meaning: 'reading what was meant …',
        comparing: 'comparing …',
        writing: 'writing the copy …',
        searching: 'searching …',
    } satisfies Record<Stage, string>,

    news: {
        opened: (name: string, format: string, entries: number): string =>
            `${name} is open: ${format}, ${count(entries, 'entry', 'entries')}`,
    },

    stage: {
        label: 'Screen',
        picture: 'The picture that the television shows',
        shown: (entry: number): string => `Entry ${entry} is shown.`,
        nothing: (why: string): string => (why ? `Nothing is shown: ${why}.` : 'Nothing is shown.'),
        unseen: (entry: number, why: string): string => `Entry ${entry} is on, but nothing is seen: ${why}`,
    },

    transport: {
        label: 'Play',
        play: 'Play',
        pause: 'Pause',
        back: 'Back 5 seconds',
        forward: 'Forward 5 seconds',
        previous: 'Previous entry',
        next: 'Next entry',
        time: 'Play time',
        goTo: 'Go to a play time',
        forms: 'A play time: 61500, 61.5s, 1:01.5 or 00:01:01,500',
        speed: 'Speed',
        track: 'Track',
        trackName: (track: number, language: string): string => `Track ${track}: ${language}`,
    },

    timeline: {
        section: 'Time line',
        label: 'Play time on the time line',
        closer: 'Zoom in',
        farther: 'Zoom out',
        whole: 'Whole film',
        legend: { entry: 'shown', marked: 'hidden in part or whole', lost: 'lost or false entry' },
    },

    facts: {
        label: 'About the file',
        format: 'Format',
        encoding: 'Encoding',
        reading: 'Texts',
        frameRate: 'Frame rate',
        entries: 'Entries',
        span: 'From – to',
        size: 'Size',
        tracks: 'Tracks',
        pair: (index: string, pictures: string): string => `${index}, pictures ${pictures}`,
    },

    log: {
        title: 'What the library logged',
        opening: 'When the file was opened',
        showing: 'When the screen was drawn last',
        none: 'nothing',
        more: (lines: number): string => `… and ${count(lines, 'line', 'lines')} more`,
    },

    tabs: {
        label: 'Views of the file',
        section: 'The file in detail',
        names: { entries: 'Entries', findings: 'Findings', source: 'Source', pictures: 'Pictures', mend: 'Mend' },
    },

    entries: {
        label: 'Entries',
        columns: {
            index: 'No.',
            start: 'Start',
            end: 'End',
            length: 'Length',
            marks: 'Marks',
            text: 'Text as the player gets it',
        },
        count: (entries: number): string => count(entries, 'entry', 'entries'),
        search: 'Search the texts',
        hits: (hits: number): string => count(hits, 'hit', 'hits'),
        none: 'The library has no entries of this file.',
        nothingFound: 'No entry holds these words.',
        picture: '(picture)',
        untilNext: 'the next',
    },

    details: {
        label: 'The chosen entry',
        title: (entry: number): string => `Entry ${entry}`,
        line: (line: number): string => `Line ${line} in the source`,
        text: 'Text of the entry',
        raw: (length: number, offset: number): string =>
            `Raw bytes: ${count(length, 'byte', 'bytes')} at ${digits(offset)}`,
        cut: (bytes: number): string => `The first ${digits(bytes)} bytes.`,
        units: (units: number, wide: boolean): string =>
            `What the library hands out: ${count(units, wide ? 'UTF-16 unit' : 'byte', wide ? 'UTF-16 units' : 'bytes')}`,
        bytes: 'Bytes in the file',
        unitsLabel: 'Units that the library hands out',
    },

    findings: {
        label: 'Findings',
        checking: 'The file is being checked …',
        fine: 'Nothing is to be said against this file.',
        nothing: 'The check has no more to say of this file.',
        right: (right: number, meant: number, isPictures: boolean): string => {
            const [one, many] = isPictures ? ['picture', 'pictures'] : ['entry', 'entries'];
            return `${digits(right)} of ${count(meant, one, many)} ${meant === 1 ? 'shows' : 'show'} as meant`;
        },
        nameHint: 'The name of the rule in the documentation of the formats',
        places: (places: number): string => (places === 1 ? 'once' : `${digits(places)} times`),
        mend: 'Mend:',
        here: 'Go there',
        line: (line: number): string => `Line ${line}`,
        more: (left: number): string => `Show more (${digits(left)} left)`,
        costs: {
            entries: { short: 'lost entries', long: 'Entries are lost, or others appear that nobody meant' },
            times: { short: 'wrong times', long: 'Entries appear at another time' },
            text: { short: 'wrong text', long: 'Another text is shown, or a part of it' },
            hidden: { short: 'hidden', long: 'The library has the entry, and answers another one, or none' },
            letters: { short: 'letters', long: 'The letters may come from another code page' },
            looks: { short: 'looks', long: 'All is there, with codes that should not be seen, or another look' },
        },
    },

    source: {
        label: 'Source of the file',
        none: 'This file has no lines to show.',
        lines: (lines: number): string => count(lines, 'line', 'lines'),
        mark: (mark: string): string => `${mark} byte-order mark`,
        noMark: 'no byte-order mark',
        markSign: 'BOM',
        legend: 'Marked: the bytes of the chosen entry',
        endings: { 'CR LF': 'CR LF', LF: 'LF', CR: 'CR', '': '' },
    },

    pictures: {
        sheet: 'Contact sheet',
        none: 'This file has no pictures.',
        count: (pictures: number): string => count(pictures, 'picture', 'pictures'),
        frame: (width: number, height: number, x: number, y: number): string =>
            `frame ${width} × ${height}, origin ${x}, ${y}`,
        palette: 'Palette',
        colour: (place: number, code: string): string => `Colour ${place}: #${code}`,
        one: (width: number, height: number, left: number, top: number): string =>
            `Picture of ${width} × ${height} at ${left}, ${top}`,
    },

    mend: {
        label: 'Mend the file',
        lead: 'Makes a copy that the television shows as its author meant. The file itself stays as it is.',
        keepFormat: 'Keep the format',
        keepFormatHint:
            'Mends what the format can show, and leaves the rest of its manner. Otherwise the copy is SubRip.',
        utf16: 'Write UTF-16',
        utf16Hint: 'For televisions that are set to Big5.',
        samiClass: 'Class',
        samiClassHint: 'Only this class of the SAMI file, such as ENUSCC; empty: all of them.',
        start: 'Mend',
        working: 'The copy is being made …',
        failed: 'There is no copy.',
        status: {
            0: 'Every entry of the copy shows at its time.',
            3: 'Some entries do not show in the copy, either.',
            1: 'There is no copy.',
        } as Record<number, string>,
        changes: 'What was changed',
        download: (name: string, size: string): string => `Download ${name} (${size})`,
        open: 'Open the copy here',
    },

    settings: {
        title: 'The television',
        lead: 'The same file shows differently on a television that is set differently. All open files follow.',
        language: 'Subtitle language',
        languageHint: 'The property that the library asks for. With Big5, it treats texts differently.',
        noLanguage: 'not set',
        codePage: 'Code page of 8-bit texts',
        codePageHint: 'The library hands them out as they are; the player chooses.',
        guess: 'guess from the letters',
        rate: 'Frames a second',
        rateHint: 'Of the film, for files that count frames; the library rounds to whole frames.',
        noRate: 'not told',
        size: 'Size of the screen',
        sizeHint: 'Pictures are drawn on it.',
        otherSize: 'another',
        width: 'Width in pixels',
        height: 'Height in pixels',
        usual: 'As usual',
        apply: 'Apply',
    },

    keys: {
        title: 'Keys',
        private: 'Everything happens in this page: it asks nothing of the network, and sends nothing.',
        licences: 'Licences of what the page contains',
        list: [
            ['Space', 'play, pause'],
            ['← →', '5 seconds back, forward'],
            ['↓ ↑', 'a minute back, forward'],
            [', .', 'previous, next entry'],
            ['[ ]', 'slower, faster'],
            ['+ − 0', 'on the time line: zoom in, out, whole film'],
            ['/', 'search the texts'],
            ['1 … 5', 'entries, findings, source, pictures, mend'],
            ['?', 'these keys'],
        ] as [string, string][],
    },
};
