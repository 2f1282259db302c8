/// The page as a whole.

import { h, replace, setText } from '../dom';
import type { Engine } from '../engine/types';
import { Session, opened, reasonOf, type FileItem } from '../session/Session';
import { Player } from '../session/Player';
import { digits, texts } from '../texts';
import { keysDialog, SettingsDialog } from './Dialogs';
import { DropZone } from './DropZone';
import { EntryPanel } from './EntryPanel';
import { Facts } from './Facts';
import { FileList } from './FileList';
import { FindingsPanel } from './FindingsPanel';
import { icon, type IconName } from './icons';
import { KeyBoard } from './KeyBoard';
import { LogPanel } from './LogPanel';
import { Marks } from './Marks';
import { MendPanel } from './MendPanel';
import { PicturesPanel } from './PicturesPanel';
import { Selection } from './Selection';
import { SourcePanel } from './SourcePanel';
import { Stage } from './Stage';
import { Tabs } from './Tabs';
import { theme, toggleTheme } from './theme';
import { Timeline } from './timeline/Timeline';
import { Transport } from './Transport';

export class App {
    readonly session: Session;
    readonly player: Player;
    readonly selection: Selection;
    private readonly marks = new Marks();
    private readonly settings: SettingsDialog;
    private readonly keys: HTMLDialogElement;
    private readonly drop: DropZone;
    private readonly tabs: Tabs;
    private readonly entries: EntryPanel;

    constructor(engine: Engine, notices: string) {
        this.session = new Session(engine);
        this.player = new Player(this.session);
        this.selection = new Selection(this.session, this.player);
        this.settings = new SettingsDialog(this.session);
        this.keys = keysDialog(notices);
        this.drop = new DropZone((files) => void this.session.add(files));
        this.entries = new EntryPanel(this.session, this.player, this.selection, this.marks);
        this.tabs = this.makeTabs();
        document.body.append(this.header(), this.main(), this.settings.element, this.keys, this.announcer());
        void engine.vocabulary().then(({ marks }) => (this.marks.all.value = marks));
        this.session.current.follow((item) => this.onFile(item));
        this.session.files.follow((files) => this.onFiles(files));
        this.session.busy.follow((isBusy) => this.tellState(isBusy));
    }

    private makeTabs(): Tabs {
        const { session, player, selection } = this;
        const panels = [
            { name: 'entries' as const, element: this.entries.element },
            { name: 'findings' as const, element: new FindingsPanel(session, player, selection).element },
            { name: 'source' as const, element: new SourcePanel(session, selection).element },
            { name: 'pictures' as const, element: new PicturesPanel(session, selection).element },
            { name: 'mend' as const, element: new MendPanel(session).element },
        ];
        return new Tabs(panels, selection);
    }

    private header(): HTMLElement {
        const button = (name: IconName, label: string, act: () => void, word = ''): HTMLButtonElement =>
            h(
                'button',
                { type: 'button', class: word ? 'quiet' : 'round', 'aria-label': label, title: label, onclick: act },
                icon(name),
                word && h('span', {}, word),
            );
        const device = button('television', texts.header.device, () => this.settings.open(), ' ');
        const words = device.lastElementChild as HTMLElement;
        this.session.settings.follow((settings) => {
            setText(words, texts.header.deviceWords(settings));
            device.setAttribute('aria-label', texts.header.deviceLabel(settings));
        });
        const light = button('moon', texts.header.theme, toggleTheme);
        theme.follow((value) => light.replaceChildren(icon(value === 'dark' ? 'sun' : 'moon')));
        const brand = h('h1', {}, icon('film'), h('span', {}, texts.title));
        const open = button('open', texts.header.open, () => this.drop.choose(), texts.header.open);
        const keys = button('keys', texts.header.keys, () => this.keys.showModal());
        return h('header', { class: 'page-head' }, brand, h('span', { class: 'grow' }), open, device, light, keys);
    }

    private main(): HTMLElement {
        const { session, player, selection } = this;
        const transport = new Transport(session, player, selection);
        new KeyBoard(player, selection, transport, {
            search: () => this.entries.focusSearch(),
            help: () => this.keys.showModal(),
        });
        const notice = this.notice();
        const view = h(
            'div',
            { class: 'view' },
            notice,
            new Stage(session, player).element,
            transport.element,
            new Facts(session).element,
            new LogPanel(session, player).element,
        );
        const timeline = new Timeline(session, player, selection);
        const work = h(
            'div',
            { class: 'work' },
            new FileList(session).element,
            view,
            timeline.element,
            this.tabs.element,
        );
        return h('main', {}, this.drop.element, work);
    }

    /// Why nothing of a file is shown, in the place of the screen.
    private notice(): HTMLElement {
        const notice = h('div', { class: 'notice bad', role: 'alert', hidden: true });
        this.session.current.follow((item) => {
            const isFault = item !== null && item.reason !== '';
            notice.hidden = !isFault;
            if (!isFault) return;
            const title = texts.files[item.state as 'refused' | 'lonely' | 'broken'];
            replace(notice, icon('warning'), h('div', {}, h('strong', {}, title), h('p', {}, reasonOf(item))));
        });
        return notice;
    }

    private announcer(): HTMLElement {
        const region = h('div', { class: 'unseen', role: 'status' });
        this.session.news.follow((text) => setText(region, text));
        return region;
    }

    private onFile(item: FileItem | null): void {
        const file = opened(item);
        document.body.classList.toggle('has-film', file !== null);
        this.tabs.setVisible('pictures', file?.isPictures === true);
        document.title = item ? `${item.name} – ${texts.title}` : texts.title;
        if (item && !file && item.state !== 'waiting' && item.state !== 'opening')
            this.selection.tab.value = 'findings';
        else if (file?.isPictures && this.selection.tab.value === 'entries') this.selection.tab.value = 'pictures';
        this.showBadges(item);
    }

    private onFiles(files: FileItem[]): void {
        document.body.classList.toggle('has-files', files.length > 0);
        this.showBadges(this.session.current.value);
    }

    private showBadges(item: FileItem | null): void {
        const findings = item?.report?.findings?.length ?? 0;
        this.tabs.setBadge('findings', findings > 0 ? String(findings) : '');
        const file = opened(item);
        this.tabs.setBadge('entries', file ? digits(file.count) : '');
    }

    /// For whoever drives the page: 'ready' when all that was dropped is settled and drawn.
    private tellState(isBusy: boolean): void {
        const root = document.documentElement;
        if (isBusy) root.dataset['state'] = 'busy';
        else
            requestAnimationFrame(() =>
                requestAnimationFrame(() => {
                    if (!this.session.busy.value)
                        root.dataset['state'] = this.session.files.value.length > 0 ? 'ready' : 'empty';
                }),
            );
    }
}
